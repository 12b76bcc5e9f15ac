#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "double/exchange.hpp"
#include "double/whole_call.hpp"

/// Instruction lists at random: what they are converted to has the host's values.

namespace {

/// What each takes from the stack, by that number; each leaves one value. Where rounding would
/// decide, only variables are asked.
const std::vector<std::string> instructions[] = {
    doubles::split("1:x|1:y|1:n|2:2.3|2:3|17:y|25|23:0 22:45 6:0.3|1:x 1:n 21:58|1:x 1:n 21:59|"
                   "1:x 1:n 21:60|1:x 1:n 21:61|1:x 20:1|1:x 20:2|1:x 20:3",
                   "|"),
    doubles::split("5:x|6:0.3|8:n|9:2|11:y|12:3|14:x|15:4|16|20:9|20:10|20:11|20:12|20:13|20:14|"
                   "20:15|20:16|2:2 21:21|20:50|20:51|2:3 21:75|2:3 21:92|20:100",
                   "|"),
    doubles::split("4|7|10|13|24:2.5|21:7|21:8|21:52|21:53|21:54|21:55|21:66|23:2 22:7", "|"),
    doubles::split("23:3 22:63|23:3 22:65", "|"), doubles::split("23:4 22:108", "|")};

std::string randomList(std::mt19937& random) {
    std::string list;
    std::size_t height = 0;
    for (int length = 0; length < 12 || height != 1; ++length) {
        const std::size_t least = length < 12 || height == 0 ? 0 : 2;
        const std::size_t nbPopped = least + random() % std::min(height + 1 - least, 5 - least);
        const std::vector<std::string>& choice = instructions[nbPopped];
        height += 1 - nbPopped;
        list += " " + choice[random() % choice.size()];
    }
    return "[" + list + " ]";
}

TEST(RandomLists, KeepTheirValuesWhenConverted) {
    std::mt19937 random(1);
    for (int k = 0; k < 60; ++k) {
        std::string instance = "cont x in -4 4 ; cont y in -4 4 ; int n in -5 5 ; names ";
        instance += k % 2 == 0 ? "on ; min 0" : "off ; min 0";
        for (int i = 0; i < 40; ++i)
            instance += " ; c" + std::to_string(i) + " : " + randomList(random) + " <= 1";
        const std::string text = doubles::runCase({instance, "hide ls_close"});
        ASSERT_EQ(text, "1 objectives, 40 constraints, 3 decisions\n") << instance;
    }
}

}  // namespace
