#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "link/entry_points.hpp"

namespace {

std::string prefixed(const std::string& text) {
    return static_cast<char>(static_cast<unsigned char>(text.size())) + text;
}

/// `ask(buffer)` answers `result` and writes `stored` and nothing behind it; null is left alone.
template <class Character>
void expectAnswer(const std::function<std::int32_t(Character*)>& ask, std::int32_t result,
                  const std::string& stored) {
    std::string buffer(300, '#');
    EXPECT_EQ(ask(reinterpret_cast<Character*>(buffer.data())), result) << stored;
    EXPECT_EQ(buffer, stored + std::string(300 - stored.size(), '#'));
    EXPECT_EQ(ask(nullptr), result) << stored;
}

TEST(InterfaceChecks, VersionAnswersInBothForms) {
    const std::string tooOld = "The API is too old for the used library, API version: ";
    const struct {
        std::int32_t api, result, compatibility;
        std::string message;
    } cases[] = {
        {0, 0, 0, tooOld + "0, library version: 1"},
        {-2147483647 - 1, 0, 0, tooOld + "-2147483648, library version: 1"},
        {1, 1, 1, "Client version and DLL version are the same."},
        {2, 1, 3, "Client version is newer than this DLL."},
        {2147483647, 1, 3, "Client version is newer than this DLL."},
    };
    for (const auto& c : cases) {
        std::int32_t compatibility[] = {-9, -9, -9};
        const std::string message = "vexcclib: " + c.message;
        const auto place = [&](auto* buffer, int form) {
            return buffer != nullptr ? &compatibility[form] : nullptr;
        };
        expectAnswer<char>([&](char* b) { return c__xapiversion(c.api, b, place(b, 0)); }, c.result,
                           message + '\0');
        int form = 0;
        for (auto* f : {d__xapiversion, d__vexxapiversion}) {
            ++form;
            expectAnswer<unsigned char>(
                [&](unsigned char* b) { return f(c.api, b, place(b, form)); }, c.result,
                prefixed(message));
        }
        for (const std::int32_t stored : compatibility) EXPECT_EQ(stored, c.compatibility);
    }
}

TEST(InterfaceChecks, SignatureAnswersInBothForms) {
    // Name, number of arguments, signature: reason, none when accepted.
    std::istringstream cases(
        "vexCallSolver 0 3\n"
        "vexCallSolver 0 3 99 -1\n"
        "vexCallSolver 0 1: has wrong argument types.\n"
        "vexCallSolver 1 3: has wrong number of arguments.\n"
        "vexCallSolver -1 3: has wrong number of arguments.\n"
        "vexReadyAPI 2 3 1 1\n"
        "vexReadyAPI 2 3 1 2: has wrong argument types.\n"
        "vexReadyAPI 2 3 2 1: has wrong argument types.\n"
        "vexReadyAPI 2 0 1 1: has wrong argument types.\n"
        "vexReadyAPI 3 3 1 1 1: has wrong number of arguments.\n"
        "vexReadyAP 2 3 1 1: cannot be found in library.\n"
        "vexCreate 0 3: cannot be found in library.\n" +
        std::string(255, 'n') + " 0 3: cannot be found in library.\n");
    for (std::string line; std::getline(cases, line);) {
        const std::string reason = line.substr(std::min(line.find(':'), line.size()));
        std::istringstream words(line);
        std::string name;
        std::int32_t count = 0;
        std::vector<std::int32_t> codes;
        words >> name >> count;
        for (std::int32_t code = 0; words >> code;) codes.push_back(code);
        const std::int32_t result = reason.empty() ? 1 : 0;
        const std::string text =
            reason.empty() ? "" : ("vexcclib: " + name + reason.substr(1)).substr(0, 255);
        expectAnswer<char>([&](char* b) { return c__xcheck(name.c_str(), count, codes.data(), b); },
                           result, text + '\0');
        const std::string asked = prefixed(name) + "no terminator";
        const auto* bytes = reinterpret_cast<const unsigned char*>(asked.data());
        for (auto* f : {d__xcheck, d__vexxcheck})
            expectAnswer<unsigned char>(
                [&](unsigned char* b) { return f(bytes, count, codes.data(), b); }, result,
                prefixed(text));
    }
}

TEST(InterfaceChecks, NullNamesAndSignaturesAreRefused) {
    char message[300];
    EXPECT_EQ(c__xcheck(nullptr, 0, nullptr, message), 0);
    EXPECT_STREQ(message, "vexcclib:  cannot be found in library.");
    EXPECT_EQ(d__xcheck(nullptr, 0, nullptr, nullptr), 0);
    EXPECT_EQ(c__xcheck("vexCallSolver", 0, nullptr, message), 0);
    EXPECT_STREQ(message, "vexcclib: vexCallSolver has wrong argument types.");
}

}  // namespace
