#include "link/entry_points.hpp"

#include <gmock/gmock.h>

#include <cstring>
#include <functional>
#include <sstream>
#include <string>

#include "double/exchange.hpp"
#include "link/build_banner.hpp"

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
    const doubles::Holding inside(doubles::isInLink, true);
    char untouched = 0;
    void* handle = &untouched;
    std::string message(20, '#');
    doubles::failingAllocation = 1;
    EXPECT_EQ(vexCreate(&handle, message.data(), 8), 1);
    EXPECT_EQ(handle, &untouched);
    EXPECT_EQ(message.substr(0, 9), std::string("std::ba\0#", 9));

    const std::pair<std::int32_t, const char*> cut[] = {
        {100, "Error while creating object"}, {6, "Error"}, {1, ""}};
    for (const auto& [length, text] : cut) {
        std::string buffer(101, '#');
        doubles::failingAllocation = 1;
        EXPECT_EQ(vexcreate(&handle, buffer.data(), length), 0);
        EXPECT_EQ(handle, nullptr);
        EXPECT_STREQ(buffer.c_str(), text);
        EXPECT_EQ(buffer[static_cast<std::size_t>(length)], '#');
    }
    doubles::failingAllocation = 1;
    EXPECT_EQ(xcreate(&handle), 1);
    EXPECT_EQ(handle, nullptr);
    doubles::failingAllocation = 0;
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
