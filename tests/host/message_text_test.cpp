#include "host/message_text.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vex {
namespace {

TEST(MessageText, CutsEachPieceToTheRoomLeftAndNeverOverruns) {
    struct Case {
        const char* what;
        std::int32_t length;
        std::vector<std::string> pieces;
        const char* text;
    };
    const Case cases[] = {
        {"all fits", 12, {"Could ", "not"}, "Could not"},
        {"exactly the room", 6, {"Could"}, "Could"},
        {"one too many", 5, {"Could"}, "Coul"},
        {"cut inside the second piece", 9, {"Could ", "not load"}, "Could no"},
        {"pieces after a full buffer", 4, {"Could", "not", ""}, "Cou"},
        {"room for the terminator alone", 1, {"Could"}, ""},
        {"no pieces", 5, {}, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::string buffer(20, '#');
        MessageText text(buffer.data(), c.length);
        text.clear();
        for (const std::string& piece : c.pieces) text << piece;
        EXPECT_STREQ(buffer.c_str(), c.text);
        EXPECT_EQ(buffer.substr(static_cast<std::size_t>(c.length)),
                  std::string(20 - static_cast<std::size_t>(c.length), '#'));
    }
}

TEST(MessageText, LeavesBuffersWithoutRoomAlone) {
    char buffer[] = "##";
    for (const std::int32_t length : {0, -1}) {
        MessageText text(buffer, length);
        text.clear();
        text << "text";
        EXPECT_STREQ(buffer, "##");
    }
    MessageText nowhere(nullptr, 10);
    nowhere.clear();
    nowhere << "text";
}

}  // namespace
}  // namespace vex
