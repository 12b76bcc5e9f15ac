#include "link/entry_points.hpp"

#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <sstream>
#include <string>

#include "link/build_banner.hpp"

// The allocation that fails next, counted from 1; 0: none.
static int failingAllocation = 0;

// Not inlined: the compiler would take the pair below for a mismatch of new and free.
// NOLINTBEGIN(cppcoreguidelines-*): this is where memory is managed by hand
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (failingAllocation > 0 && --failingAllocation == 0) throw std::bad_alloc();
    if (void* memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
    std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
// NOLINTEND(cppcoreguidelines-*)

namespace {

TEST(EntryPoints, CreatesAndFreesPairUp) {
    const auto viaMessage = [](auto* create) {
        return [create](void** handle) { return create(handle, nullptr, 0); };
    };
    const std::function<std::int32_t(void**)> creates[] = {
        viaMessage(vexCreate), viaMessage(vexcreate), xcreate, vexxcreate};
    const std::function<void(void**)> frees[] = {vexFree, vexfree, xfree, vexxfree};
    for (const auto& create : creates) {
        for (const auto& free : frees) {
            void* handle = nullptr;
            EXPECT_EQ(create(&handle), 1);
            EXPECT_NE(handle, nullptr);
            free(&handle);
            EXPECT_EQ(handle, nullptr);
            free(&handle);  // a null handle is left alone
        }
    }
    void* none = nullptr;
    EXPECT_EQ(vexfree(&none), 1);
}

TEST(EntryPoints, CreateTellsAboutMissingMemory) {
    char untouched = 0;
    void* handle = &untouched;
    std::string message(20, '#');
    failingAllocation = 1;
    EXPECT_EQ(vexCreate(&handle, message.data(), 8), 1);
    EXPECT_EQ(handle, &untouched);
    EXPECT_EQ(message.substr(0, 9), std::string("std::ba\0#", 9));

    struct Case {
        std::int32_t length;
        const char* text;
    };
    for (const Case& c :
         {Case{100, "Error while creating object"}, Case{6, "Error"}, Case{1, ""}}) {
        std::string buffer(101, '#');
        failingAllocation = 1;
        EXPECT_EQ(vexcreate(&handle, buffer.data(), c.length), 0);
        EXPECT_EQ(handle, nullptr);
        EXPECT_STREQ(buffer.c_str(), c.text);
        EXPECT_EQ(buffer[static_cast<std::size_t>(c.length)], '#');
    }
    failingAllocation = 1;
    EXPECT_EQ(xcreate(&handle), 1);
    EXPECT_EQ(handle, nullptr);
    failingAllocation = 0;
}

TEST(EntryPoints, MessageIsEmptiedOnSuccessAndLeftAloneWithoutLength) {
    for (auto* create : {vexCreate, vexcreate}) {
        void* handle = nullptr;
        char buffer[] = "##";
        EXPECT_EQ(create(&handle, buffer, 0), 1);
        EXPECT_STREQ(buffer, "##");
        vexFree(&handle);
        EXPECT_EQ(create(&handle, buffer, 2), 1);
        EXPECT_EQ(std::string(buffer, 2), std::string("\0#", 2)) << "one character is written";
        vexFree(&handle);
    }
}

TEST(EntryPoints, TheBannerNamesLinkVersionRevisionDateAndPlatform) {
    std::istringstream words(vex::buildBanner);
    std::string name, link, version, revision, released, date, platform;
    words >> name >> link >> version >> revision >> released >> date;
    std::getline(words >> std::ws, platform);
    EXPECT_EQ(name + " " + link + " " + version + " " + released,
              "LocalSolver link " VEXCC_VERSION " Released");
    EXPECT_EQ(revision.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789"), revision.npos);
    EXPECT_EQ(date.size(), std::strlen("2026-01-31"));
    EXPECT_EQ(platform, VEXCC_PLATFORM);
}

TEST(EntryPoints, ProblemsCannotBeModified) {
    char anything = 0;
    for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&anything)}) {
        EXPECT_EQ(vexModifyProblem(handle), -1);
        EXPECT_EQ(vexHaveModifyProblem(handle), -1);
    }
}

TEST(EntryPoints, LocksMayBeSetUpAndTornDownRepeatedly) {
    for (int round = 0; round < 2; ++round) {
        vexInitialize();
        c__vexinitialize();
        vexFinalize();
        c__vexfinalize();
    }
}

}  // namespace
