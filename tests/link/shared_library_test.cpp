#include <gmock/gmock.h>

#include <array>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "host/folder_loading.hpp"
#include "host/host_interfaces.hpp"

// The link as the host meets it: a shared library, loaded by its file name.

namespace vex {
namespace {

TEST(SharedLibrary, ExportsItsEntryPointsAndNothingElse) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(
        popen(NM " -D --defined-only --format=posix " LINK_FILE, "r"), pclose);
    ASSERT_NE(pipe, nullptr);
    std::vector<std::string> names;
    std::array<char, 512> line;
    while (std::fgets(line.data(), static_cast<int>(line.size()), pipe.get()) != nullptr) {
        std::string name;
        std::istringstream(line.data()) >> name;
        names.push_back(name);
    }
    EXPECT_THAT(
        names, testing::UnorderedElementsAre(
                   "vexCreate", "vexcreate", "xcreate", "vexxcreate", "vexFree", "vexfree", "xfree",
                   "vexxfree", "vexReadyAPI", "c__vexreadyapi", "vexCallSolver", "c__vexcallsolver",
                   "vexModifyProblem", "vexHaveModifyProblem", "vexInitialize", "c__vexinitialize",
                   "vexFinalize", "c__vexfinalize", "c__xapiversion", "d__xapiversion",
                   "d__vexxapiversion", "c__xcheck", "d__xcheck", "d__vexxcheck"));
}

/// The option library's "XCreate" is looked up in lower case first, and the link exports `xcreate`.
void expectEachItsOwnCreate(bool linkFirst) {
    std::string reason;
    LibraryHandle link = nullptr;
    const auto loadLink = [&] { link = platformLoading().open(LINK_FILE, reason); };
    if (linkFirst) loadLink();

    const LibraryLoading loading = test::loadingFrom(SMALL_HOSTS "/options");
    Binding binding(optInterface);
    char message[256];
    ASSERT_TRUE(binding.ensureLoaded({message, sizeof message}, loading)) << message;
    if (!linkFirst) loadLink();
    ASSERT_NE(link, nullptr) << reason;

    const LibraryHandle options = loading.open("prmdclib64" + std::string(librarySuffix), reason);
    auto* const nbObjects =
        reinterpret_cast<std::int32_t (*)()>(platformLoading().find(options, "smallHostObjects"));
    auto* const createLink =
        reinterpret_cast<std::int32_t (*)(void**)>(platformLoading().find(link, "xcreate"));
    auto* const freeLink =
        reinterpret_cast<void (*)(void**)>(platformLoading().find(link, "xfree"));
    ASSERT_TRUE(nbObjects != nullptr && createLink != nullptr && freeLink != nullptr);

    void* optionObject = nullptr;
    void* linkObject = nullptr;
    ASSERT_TRUE(binding.create(&optionObject, {message, sizeof message}, loading));
    EXPECT_EQ(nbObjects(), 1);
    EXPECT_EQ(createLink(&linkObject), 1);
    EXPECT_EQ(nbObjects(), 1);
    EXPECT_NE(linkObject, nullptr);
    freeLink(&linkObject);
    EXPECT_EQ(nbObjects(), 1);
    binding.destroy(&optionObject);
    EXPECT_EQ(nbObjects(), 0);
    EXPECT_EQ(linkObject, nullptr);
    EXPECT_EQ(optionObject, nullptr);
}

// Libraries are never unloaded, so each order has a process of its own.
TEST(SharedLibraryDeathTest, OptionLibraryAndLinkCallTheirOwnCreateInBothOrders) {
    for (const bool linkFirst : {true, false}) {
        EXPECT_EXIT(
            {
                expectEachItsOwnCreate(linkFirst);
                std::exit(testing::Test::HasFailure() ? 1 : 0);
            },
            testing::ExitedWithCode(0), "")
            << "link first: " << linkFirst;
    }
}

}  // namespace
}  // namespace vex
