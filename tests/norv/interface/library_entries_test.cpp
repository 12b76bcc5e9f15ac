// Every interface of the two host libraries answers for itself: version, operations, objects.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "hostapi/codes.hpp"
#include "hostapi/library_entries.hpp"
#include "hostapi/type_codes.hpp"
#include "norv/host_operations.hpp"

namespace {

using hosttest::Library;

struct TableLine {
    std::string name;
    std::vector<std::int32_t> codes;  ///< the result's first
};

#define HOST_OPERATION(name, form, ...)               \
    {#name,                                           \
     {hostapi::Signature<__VA_ARGS__>::codes.begin(), \
      hostapi::Signature<__VA_ARGS__>::codes.end()}},
const std::vector<TableLine> nmoTable = {
#include "hostapi/nmo_operations.inc"
};
const std::vector<TableLine> nevTable = {
#include "hostapi/nev_operations.inc"
};
const std::vector<TableLine> huxTable = {
#include "hostapi/hux_operations.inc"
};
const std::vector<TableLine> optTable = {
#include "hostapi/opt_operations.inc"
};
#undef HOST_OPERATION

struct InterfaceCase {
    const char* prefix;
    const char* library;
    const char* symbolPrefix;
    std::int32_t version;
    const std::vector<TableLine>* table;
    bool createsInDirectory;
};

class LibraryEntries : public testing::TestWithParam<InterfaceCase> {
protected:
    template <class Function>
    Function* entry(const std::string& before, const std::string& after) const {
        return library.find<Function>(before + GetParam().symbolPrefix + after);
    }

    std::string opening() const {
        return std::string(GetParam().library) + ", interface " + GetParam().prefix + ": ";
    }

    /// The refusal's text; empty when the library agrees.
    std::string refusal(const std::string& name, std::vector<std::int32_t> codes) const {
        char message[256] = "untouched";
        const auto nbArguments = static_cast<std::int32_t>(codes.size()) - 1;
        const auto agrees = entry<hostapi::CheckEntry>("C", "XCheck")(name.c_str(), nbArguments,
                                                                      codes.data(), message);
        EXPECT_EQ(agrees != 0, message[0] == '\0') << message;
        return message;
    }

    Library library{GetParam().library};
};

TEST_P(LibraryEntries, OfferExactlyTheTable) {
    for (const TableLine& line : *GetParam().table) {
        EXPECT_EQ(refusal(line.name, line.codes), "") << line.name;
        auto tooMany = line.codes;
        tooMany.push_back(3);
        EXPECT_EQ(refusal(line.name, tooMany), opening() + line.name + " takes " +
                                                   std::to_string(line.codes.size() - 1) +
                                                   " arguments after the object, not " +
                                                   std::to_string(line.codes.size()) + ".");
        for (std::size_t k = 0; k < line.codes.size(); ++k) {
            auto wrong = line.codes;
            wrong[k] = 99;
            const std::string place = k == 0 ? "the result" : "argument " + std::to_string(k);
            EXPECT_EQ(refusal(line.name, wrong), opening() + line.name + ": " + place +
                                                     " has type code " +
                                                     std::to_string(line.codes[k]) + ", not 99.");
        }
    }
    EXPECT_EQ(refusal("noSuchThing", {3}), opening() + "the library has no operation noSuchThing.");
    EXPECT_EQ(refusal(std::string(100000, 'x'), {3}).size(), 255U);
}

TEST_P(LibraryEntries, JudgeTheVersion) {
    auto* check = entry<hostapi::VersionEntry>("C", "XAPIVersion");
    const std::int32_t own = GetParam().version;
    const std::string needs = ", the library needs " + std::to_string(own) + " or newer.";
    const struct {
        std::int32_t api, accepted, compatibility;
        std::string message;
    } cases[] = {
        {own, 1, 1, opening() + "version " + std::to_string(own) + " is the library's own."},
        {own - 1, 0, 0, opening() + "version " + std::to_string(own - 1) + " is too old" + needs},
        {-7, 0, 0, opening() + "version -7 is too old" + needs},
        {own + 1, 1, 3,
         opening() + "version " + std::to_string(own + 1) + " is newer than version " +
             std::to_string(own) + "."},
    };
    for (const auto& each : cases) {
        char message[256];
        std::int32_t compatibility = -1;
        EXPECT_EQ(check(each.api, message, &compatibility), each.accepted);
        EXPECT_EQ(compatibility, each.compatibility);
        EXPECT_EQ(message, each.message);
        EXPECT_EQ(check(each.api, nullptr, nullptr), each.accepted);
    }
}

TEST_P(LibraryEntries, CreateAndFreeObjects) {
    auto* release = entry<hostapi::FreeEntry>("", "XFree");
    void* object = nullptr;
    EXPECT_NE(entry<hostapi::CreateEntry>("", "XCreate")(&object), 0);
    EXPECT_NE(object, nullptr);
    release(&object);
    EXPECT_EQ(object, nullptr);
    release(&object);
    release(nullptr);
    if (!GetParam().createsInDirectory) return;
    char message[4] = "old";
    EXPECT_NE(entry<hostapi::CreateInDirectoryEntry>("C", "XCreateD")(&object, "anywhere", message,
                                                                      sizeof message),
              0);
    EXPECT_STREQ(message, "");
    release(&object);
}

INSTANTIATE_TEST_SUITE_P(
    Host, LibraryEntries,
    testing::Values(
        InterfaceCase{"nmo", "hubdclib64", "nmo", hostapi::interface_version::nmo, &nmoTable, true},
        InterfaceCase{"nev", "hubdclib64", "nev", hostapi::interface_version::nev, &nevTable, true},
        InterfaceCase{"hux", "hubdclib64", "hux", hostapi::interface_version::hux, &huxTable,
                      false},
        InterfaceCase{"opt", "prmdclib64", "", hostapi::interface_version::opt, &optTable, false}),
    [](const auto& each) { return std::string(each.param.prefix); });

TEST(EmptyObjects, AnswerEveryQuestionAboutNothing) {
    void* object = nullptr;
    hosttest::hub().library.find<hostapi::CreateEntry>("nmoXCreate")(&object);
    auto* model = static_cast<hostapi::ModelHandle>(object);
    const auto& host = hosttest::hub();
    EXPECT_EQ(host.nmoM(model) + host.nmoN(model) + host.nmoObjNZ(model), 0);
    EXPECT_EQ(host.nmoEnvironment(model), nullptr);
    host.nmoSetNRowPerm(model);
    host.nmoGetVarL(model, nullptr);
    host.nmoGetObjQ(model, nullptr, nullptr, nullptr);
    host.nmoCompleteSolution(model);
    EXPECT_EQ(host.nmoGetHeadnTail(model, hostapi::head_and_tail::objective), 0.0);
    host.library.find<hostapi::FreeEntry>("nmoXFree")(&object);
}

TEST(AuditObject, FormatsTheLineAndCutsItToTheBuffer) {
    const auto& host = hosttest::hub();
    void* object = nullptr;
    host.library.find<hostapi::CreateEntry>("huxXCreate")(&object);
    auto* audit = static_cast<hostapi::AuditHandle>(object);
    host.huxSetAuditLine(audit, "Link 1.0\nr5");
    char line[64];
    EXPECT_STREQ(host.huxGetAuditLine(audit, line, sizeof line), "Link 1.0 r5 [built-in host]");
    EXPECT_STREQ(host.huxGetAuditLine(audit, line, 5), "Link");
    EXPECT_STREQ(host.huxGetAuditLine(audit, line, 0), "Link");
    host.library.find<hostapi::FreeEntry>("huxXFree")(&object);
}

}  // namespace
