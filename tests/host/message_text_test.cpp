#include "host/message_text.hpp"

#include <gtest/gtest.h>

#include <string>

namespace vex {
namespace {

TEST(MessageText, CutsEachPieceToTheRoomLeftAndNeverOverruns) {
    const struct {
        std::int32_t length;
        std::string first, second, text;
    } cases[] = {
        {12, "Could ", "not", "Could not"},    {6, "Could", "", "Could"},  {5, "Could", "", "Coul"},
        {9, "Could ", "not load", "Could no"}, {4, "Could", "not", "Cou"}, {1, "Could", "", ""},
    };
    for (const auto& [length, first, second, expected] : cases) {
        std::string buffer(20, '#');
        MessageText text(buffer.data(), length);
        EXPECT_EQ(buffer[static_cast<std::size_t>(length) - 1], '\0');
        text << "stale";
        text.clear();
        EXPECT_STREQ(buffer.c_str(), "");
        text << first << second;
        EXPECT_STREQ(buffer.c_str(), expected.c_str());
        EXPECT_EQ(buffer.substr(static_cast<std::size_t>(length)),
                  std::string(20 - static_cast<std::size_t>(length), '#'));
    }
}

TEST(MessageText, LeavesBuffersWithoutRoomAlone) {
    char buffer[] = "##";
    for (const std::int32_t length : {0, -1, 10}) {
        MessageText text(length < 10 ? buffer : nullptr, length);
        text.clear();
        text << "text";
        EXPECT_STREQ(buffer, "##");
    }
}

}  // namespace
}  // namespace vex
