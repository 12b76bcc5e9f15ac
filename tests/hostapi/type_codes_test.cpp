#include "hostapi/type_codes.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

template <class Function>
std::vector<std::int32_t> codes() {
    const auto& all = hostapi::Signature<Function>::codes;
    EXPECT_EQ(all.size(), static_cast<std::size_t>(hostapi::Signature<Function>::nbArguments) + 1);
    return {all.begin(), all.end()};
}

TEST(Signature, HasTheResultFirstAndLeavesTheObjectOut) {
    using namespace hostapi;
    EXPECT_THAT((codes<void(ModelHandle)>()), ElementsAre(0));
    EXPECT_THAT((codes<std::int32_t(EnvironmentHandle, const char*)>()), ElementsAre(3, 11));
    EXPECT_THAT((codes<EnvironmentHandle(ModelHandle, OptionHandle)>()), ElementsAre(1, 1));
    EXPECT_THAT((codes<char*(OptionHandle, char*, double, std::int32_t*)>()),
                ElementsAre(12, 12, 13, 14));
    EXPECT_THAT((codes<const double*(ModelHandle, double*, const double*, void**)>()),
                ElementsAre(16, 15, 16, 17));
}

TEST(OperationTables, NameEachOperationOnceUnderItsPrefix) {
#define HOST_OPERATION(name, form, ...) {#name, sizeof(#form)},
    const std::map<std::string, std::vector<std::pair<std::string, std::size_t>>> tables = {
        {"nmo",
         {
#include "hostapi/nmo_operations.inc"
         }},
        {"nev",
         {
#include "hostapi/nev_operations.inc"
         }},
        {"opt",
         {
#include "hostapi/opt_operations.inc"
         }},
        {"hux",
         {
#include "hostapi/hux_operations.inc"
         }},
    };
#undef HOST_OPERATION
    for (const auto& [prefix, lines] : tables) {
        std::set<std::string> names;
        for (const auto& line : lines) {
            EXPECT_TRUE(line.first.starts_with(prefix)) << line.first;
            EXPECT_TRUE(names.insert(line.first).second) << line.first << " stands twice";
        }
        EXPECT_FALSE(names.empty()) << prefix;
    }
}

}  // namespace
