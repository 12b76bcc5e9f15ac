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

TEST(Binding, FailsAtEveryLookupAndThenStillBinds) {
    Binding binding(nmoInterface);
    for (int k = 1; !binding.isLoaded(); ++k) {
        exchange().spoil(k, doubles::Fault::low);
        const bool bound = load(binding, hostLoading());
        ASSERT_EQ(exchange().spoiled(), bound ? "" : "find") << k;
        ASSERT_EQ(binding.isLoaded(), bound);
        EXPECT_EQ(std::string(message).starts_with("Could not load symbol '"), !bound);
    }
    exchange().spoil(0, doubles::Fault::none);
    message[0] = '?';
    EXPECT_TRUE(load(binding, hostLoading()));
    EXPECT_STREQ(message, "");
    EXPECT_EQ(exchange().nbCalls(), 0) << "a bound library is not touched again";
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

TEST(Binding, BindsARealLibraryOrSaysThatThereIsNone) {
    Binding binding(optInterface);
    void* none = nullptr;
    EXPECT_FALSE(binding.create(&none, {message, sizeof message}, test::loadingFrom("no/folder")));
    EXPECT_THAT(message, testing::StartsWith("Could not load shared library prmdclib64."));
    EXPECT_TRUE(load(binding, test::loadingFrom(SMALL_HOST)));
    EXPECT_STREQ(message, "");
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
