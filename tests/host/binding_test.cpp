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

char message[1024];

/// A library of the double's in which the exported names are spelt as `spelt` says.
LibraryLoading spelling(std::string (*spelt)(std::string), std::vector<std::string>& found) {
    LibraryLoading loading = doubles::hostLoading();
    loading.find = [spelt, &found](LibraryHandle library, const std::string& symbol) {
        for (const std::string name : {"huxXCreate", "huxXFree", "ChuxXCheck", "ChuxXAPIVersion",
                                       "ChuxSetAuditLine", "ChuxGetAuditLine"}) {
            if (spelt(name) != symbol) continue;
            found.push_back(symbol);
            return doubles::hostLoading().find(library, name);
        }
        return AnyFunction{};
    };
    return loading;
}

TEST(Binding, FindsNamesInLowerCaseFirstAndInUpperCaseLast) {
    const auto inCase = [](std::string name, char from, char to) {
        for (char& c : name) c = c >= from && c <= from + 25 ? static_cast<char>(c - from + to) : c;
        return name;
    };
    static const auto convert = inCase;
    for (auto* spelt : {+[](std::string name) { return convert(name, 'A', 'a'); },
                        +[](std::string name) { return convert(name, 'a', 'A'); }}) {
        std::vector<std::string> found;
        Binding binding(huxInterface);
        EXPECT_TRUE(binding.ensureLoaded({message, sizeof message}, spelling(spelt, found)));
        EXPECT_EQ(found.front(), spelt("huxXCreate"));
        EXPECT_EQ(found.size(), 6U);
    }
    doubles::bindHost();
}

TEST(Binding, FailsAtEveryLookupAndThenStillBinds) {
    Binding binding(nmoInterface);
    bool bound = false;
    for (int failing = 1; !bound; ++failing) {
        LibraryLoading loading = doubles::hostLoading();
        int nbFound = 0;
        loading.find = [&](LibraryHandle library, const std::string& symbol) {
            const AnyFunction function = doubles::hostLoading().find(library, symbol);
            return function != nullptr && ++nbFound == failing ? nullptr : function;
        };
        bound = binding.ensureLoaded({message, sizeof message}, loading);
        ASSERT_EQ(binding.isLoaded(), bound);
        if (bound)
            EXPECT_STREQ(message, "");
        else
            EXPECT_THAT(message,
                        testing::AllOf(testing::StartsWith("Could not load symbol '"),
                                       testing::HasSubstr("nmo"), testing::EndsWith("': ")));
    }
    exchange().reset();
    int nbCalls = 0;
    exchange().listen([&nbCalls](const auto&, const auto&, const auto&) { ++nbCalls; });
    EXPECT_TRUE(binding.ensureLoaded({message, sizeof message}, doubles::hostLoading()));
    EXPECT_EQ(nbCalls, 0) << "a bound library is not touched again";
    exchange().reset();
}

TEST(Binding, CountsTheObjectsOfSeveralThreads) {
    const doubles::Silence silence;
    Binding binding(huxInterface);
    binding.setUpLocks();
    binding.setUpLocks();
    std::array<void*, 8> kept{};
    std::vector<std::thread> threads;
    threads.reserve(kept.size());
    for (void*& first : kept) {
        threads.emplace_back([&binding, &first] {
            char text[64];
            for (int k = 0; k < 101; ++k) {
                void* handle = nullptr;
                if (!binding.create(&handle, {text, sizeof text}, doubles::hostLoading())) continue;
                if (k == 0) first = handle;
                if (k > 0) binding.destroy(&handle);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(binding.nbObjects(), 8);
    binding.tearDownLocks();
    binding.tearDownLocks();
    EXPECT_EQ(binding.nbObjects(), 8);
    for (void*& handle : kept) binding.destroy(&handle);
    EXPECT_EQ(binding.nbObjects(), 0);
}

TEST(Binding, WaitsForTheLockOfAnotherThread) {
    Binding binding(huxInterface);
    binding.setUpLocks();
    std::atomic<int> nbOpened{0};
    LibraryLoading loading = doubles::hostLoading();
    loading.open = [&](const std::string& name, std::string& reason) {
        ++nbOpened;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return doubles::hostLoading().open(name, reason);
    };
    const doubles::Silence silence;
    std::vector<std::thread> threads;
    threads.reserve(4);
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            char text[64];
            EXPECT_TRUE(binding.ensureLoaded({text, sizeof text}, loading));
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(nbOpened, 1);
}

TEST(Binding, SaysWhatIsWrongWithARealLibrary) {
    const struct {
        const char* folder;
        std::string message;  // empty: bound
    } cases[] = {
        {"sound", ""},
        {"refuses_version", "This library speaks another version."},
        {"lacks_entry", "Could not load symbol 'CXCheck': "},
        {"lacks_symbol", "Could not load symbol 'CoptReadDefinition': "},
    };
    for (const auto& [folder, expected] : cases) {
        Binding binding(optInterface);
        EXPECT_EQ(binding.ensureLoaded({message, sizeof message},
                                       test::loadingFrom(SMALL_HOSTS "/" + std::string(folder))),
                  expected.empty());
        EXPECT_EQ(message, expected) << folder;
    }
    Binding binding(optInterface);
    EXPECT_FALSE(binding.ensureLoaded({message, sizeof message}, test::loadingFrom("no/folder")));
    EXPECT_THAT(message, testing::StartsWith("Could not load shared library prmdclib64."));
    doubles::bindHost();
}

/// Death tests see standard error alone; the report goes to standard output.
void showStandardOutput() {
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

TEST(BindingDeathTest, AMissingFunctionEndsTheProcessWithItsLine) {
    const auto exits = testing::ExitedWithCode(123);
    EXPECT_EXIT(
        {
            showStandardOutput();
            exchange().answer(R"(CnmoXCheck("nmoNameOptFile 1: 12 12"))",
                              "0, this host is too old.");
            setUpBindingLocks();
            doubles::bindHost();
            nmoNameOptFile(nullptr, message);
        },
        exits, "^nmoNameOptFile could not be loaded: this host is too old\\.\n$");
    EXPECT_EXIT(
        {
            showStandardOutput();
            optMessageCount(nullptr);
        },
        exits, "^optMessageCount could not be loaded: The library is not loaded\\.\n$");
}

}  // namespace
}  // namespace vex
