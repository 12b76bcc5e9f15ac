#include "host/binding.hpp"

#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "double/exchange.hpp"
#include "double/host_double.hpp"
#include "host/folder_loading.hpp"
#include "host/host_interfaces.hpp"
#include "host/libraries.hpp"
#include "host/operations.hpp"

namespace vex {
namespace {

using doubles::exchange;
using doubles::hostLoading;

char message[1024];

bool load(Binding& binding, const LibraryLoading& loading) {
    return binding.ensureLoaded({message, sizeof message}, loading);
}

/// A library of the double's in which one range of letters is spelt in the other case.
LibraryLoading spelling(char first, std::vector<std::string>& found) {
    LibraryLoading loading = hostLoading();
    loading.find = [first, &found](LibraryHandle library, const std::string& symbol) {
        for (const std::string name : {"huxXCreate", "huxXFree", "ChuxXCheck", "ChuxXAPIVersion",
                                       "ChuxSetAuditLine", "ChuxGetAuditLine"}) {
            std::string spelt = name;
            for (char& c : spelt) c = c >= first && c < first + 26 ? static_cast<char>(c ^ 32) : c;
            if (spelt != symbol) continue;
            found.push_back(symbol);
            return hostLoading().find(library, name);
        }
        return AnyFunction{};
    };
    return loading;
}

TEST(Binding, FindsNamesInLowerCaseFirstAndInUpperCaseLast) {
    for (const char first : {'A', 'a'}) {
        std::vector<std::string> found;
        Binding binding(huxInterface);
        EXPECT_TRUE(load(binding, spelling(first, found)));
        EXPECT_EQ(found.front(), first == 'A' ? "huxxcreate" : "HUXXCREATE");
        EXPECT_EQ(found.size(), 6U);
    }
    doubles::bindHost();
}

TEST(Binding, FailsAtEveryLookupAndThenStillBinds) {
    Binding binding(nmoInterface);
    bool bound = false;
    for (int failing = 1; !bound; ++failing) {
        LibraryLoading loading = hostLoading();
        int nbFound = 0;
        loading.find = [&](LibraryHandle library, const std::string& symbol) {
            const AnyFunction function = hostLoading().find(library, symbol);
            return function != nullptr && ++nbFound == failing ? nullptr : function;
        };
        bound = load(binding, loading);
        ASSERT_EQ(binding.isLoaded(), bound);
        const testing::Matcher<const char*> reason = testing::StartsWith("Could not load symbol '");
        EXPECT_THAT(message, bound ? testing::StrEq("") : reason);
    }
    int nbCalls = 0;
    exchange().listen([&nbCalls](const auto&, const auto&, const auto&) { ++nbCalls; });
    EXPECT_TRUE(load(binding, hostLoading()));
    EXPECT_EQ(nbCalls, 0) << "a bound library is not touched again";
    exchange().reset();
}

TEST(Binding, LoadsOnceAndCountsTheObjectsOfSeveralThreads) {
    const doubles::Silence silence;
    Binding binding(huxInterface);
    binding.setUpLocks();
    std::atomic<int> nbOpened{0};
    LibraryLoading loading = hostLoading();
    loading.open = [&](const std::string& name, std::string& reason) {
        ++nbOpened;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        binding.setUpLocks();  // they are there already
        return hostLoading().open(name, reason);
    };
    std::array<void*, 8> kept{};
    std::vector<std::thread> threads;
    for (void*& first : kept) {
        threads.emplace_back([&] {
            char text[64];
            for (int k = 0; k < 101; ++k) {
                void* handle = nullptr;
                if (!binding.create(&handle, {text, sizeof text}, loading)) continue;
                if (k == 0) first = handle;
                if (k > 0) binding.destroy(&handle);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(nbOpened, 1);
    EXPECT_EQ(binding.nbObjects(), 8);
    binding.tearDownLocks();
    binding.tearDownLocks();
    for (void*& handle : kept) binding.destroy(&handle);
    EXPECT_EQ(binding.nbObjects(), 0);
}

TEST(Binding, SaysWhatIsWrongWithARealLibrary) {
    const std::pair<std::string, std::string> cases[] = {
        // folder, message; empty: bound
        {"sound", ""},
        {"refuses_version", "This library speaks another version."},
        {"lacks_entry", "Could not load symbol 'CXCheck': "},
        {"lacks_symbol", "Could not load symbol 'CoptReadDefinition': "},
    };
    for (const auto& [folder, expected] : cases) {
        Binding binding(optInterface);
        EXPECT_EQ(load(binding, test::loadingFrom(SMALL_HOSTS "/" + folder)), expected.empty());
        EXPECT_EQ(message, expected) << folder;
    }
    Binding binding(optInterface);
    EXPECT_FALSE(load(binding, test::loadingFrom("no/folder")));
    EXPECT_THAT(message, testing::StartsWith("Could not load shared library prmdclib64."));
    doubles::bindHost();
}

TEST(BindingDeathTest, AMissingFunctionEndsTheProcessWithItsLine) {
    // Death tests see standard error alone; the report goes to standard output.
    EXPECT_EXIT((dup2(STDERR_FILENO, STDOUT_FILENO), optMessageCount(nullptr)),
                testing::ExitedWithCode(123),
                "^optMessageCount could not be loaded: The library is not loaded\\.\n$");
    EXPECT_EXIT(
        {
            dup2(STDERR_FILENO, STDOUT_FILENO);
            exchange().answer(R"(CnmoXCheck("nmoNameOptFile 1: 12 12"))",
                              "0, this host is too old.");
            setUpBindingLocks();
            doubles::bindHost();
            nmoNameOptFile(nullptr, message);
        },
        testing::ExitedWithCode(123),
        "^nmoNameOptFile could not be loaded: this host is too old\\.\n$");
}

}  // namespace
}  // namespace vex
