#include <gmock/gmock.h>
#include <unistd.h>

#include <string>

#include "host/folder_loading.hpp"
#include "host/host_interfaces.hpp"
#include "host/operations.hpp"

// The real interfaces against small but real host libraries, sound and faulty.

namespace vex {
namespace {

using test::loadingFrom;

std::string folder(const std::string& host) {
    return SMALL_HOSTS "/" + host;
}

TEST(HostLibraries, EachFaultHasItsMessage) {
    struct Case {
        const char* host;
        std::string message;  // empty: bound
    };
    const Case cases[] = {
        {"sound", ""},
        {"upper_case", ""},
        {"lacks_function", ""},
        {"refuses_version", "The client speaks another version."},
        {"lacks_entry", "Could not load symbol 'CnmoXCheck': "},
        {"lacks_symbol", "Could not load symbol 'CnmoNameOptFile': "},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.host);
        Binding binding(nmoInterface);
        char message[256] = "stale";
        EXPECT_EQ(binding.ensureLoaded({message, sizeof message}, loadingFrom(folder(c.host))),
                  c.message.empty());
        EXPECT_EQ(message, c.message);
    }
}

TEST(HostLibraries, MissingFileIsReportedInTheLoadersWords) {
    Binding binding(optInterface);
    char message[256];
    EXPECT_FALSE(binding.ensureLoaded({message, sizeof message}, loadingFrom("no/such/folder")));
    const std::string start =
        "Could not load shared library prmdclib64" + std::string(librarySuffix) + ": ";
    EXPECT_THAT(message, testing::StartsWith(start));
    EXPECT_GT(std::string(message).size(), start.size());
}

TEST(HostLibraries, EveryOperationIsCallableOnceBound) {
    char message[256];
    for (Binding* binding : {&nmoBinding, &nevBinding, &huxBinding}) {
        ASSERT_TRUE(binding->ensureLoaded({message, sizeof message}, loadingFrom(folder("sound"))));
    }
    EXPECT_EQ(nmoGetVarLowerOne(nullptr, 3), 0.0);
    EXPECT_EQ(nevThreads(nullptr), 0);
    EXPECT_EQ(huxGetAuditLine(nullptr, message, sizeof message), nullptr);
}

/// Death tests see standard error alone; the report goes to standard output.
void showStandardOutput() {
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

TEST(HostLibrariesDeathTest, MissingFunctionEndsTheProcessWithItsLine) {
    const auto exits = testing::ExitedWithCode(123);
    EXPECT_EXIT(
        {
            showStandardOutput();
            char message[256];
            nmoBinding.setUpLocks();
            if (nmoBinding.ensureLoaded({message, sizeof message},
                                        loadingFrom(folder("lacks_function")))) {
                nmoM(nullptr);  // there; no end here
                nmoNameOptFile(nullptr, message);
            }
        },
        exits, "^nmoNameOptFile could not be loaded: this host is too old for it\\.\n$");
    EXPECT_EXIT(
        {
            showStandardOutput();
            optMessageCount(nullptr);
        },
        exits, "^optMessageCount could not be loaded: The library is not loaded\\.\n$");
}

}  // namespace
}  // namespace vex
