#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "link/entry_points.hpp"

namespace {

std::string prefixed(const std::string& text) {
    return static_cast<char>(static_cast<unsigned char>(text.size())) + text;
}

unsigned char* bytes(std::string& text) {
    return reinterpret_cast<unsigned char*>(text.data());
}

/// `stored` and nothing behind it was written over the '#' of `buffer`.
void expectStored(const std::string& buffer, const std::string& stored) {
    EXPECT_EQ(buffer.substr(0, stored.size()), stored);
    EXPECT_EQ(buffer.substr(stored.size()), std::string(buffer.size() - stored.size(), '#'));
}

TEST(InterfaceChecks, VersionAnswersInBothForms) {
    struct Case {
        std::int32_t api;
        std::int32_t result;
        std::int32_t compatibility;
        const char* message;
    };
    const Case cases[] = {
        {0, 0, 0,
         "vexcclib: The API is too old for the used library, API version: 0, library version: 1"},
        {-2147483647 - 1, 0, 0,
         "vexcclib: The API is too old for the used library, API version: -2147483648, library "
         "version: 1"},
        {1, 1, 1, "vexcclib: Client version and DLL version are the same."},
        {2, 1, 3, "vexcclib: Client version is newer than this DLL."},
        {2147483647, 1, 3, "vexcclib: Client version is newer than this DLL."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.api);
        std::int32_t compatibility = -9;
        std::string message(300, '#');
        EXPECT_EQ(c__xapiversion(c.api, message.data(), &compatibility), c.result);
        EXPECT_EQ(compatibility, c.compatibility);
        expectStored(message, c.message + std::string(1, '\0'));
        for (auto* ask : {d__xapiversion, d__vexxapiversion}) {
            compatibility = -9;
            message.assign(300, '#');
            EXPECT_EQ(ask(c.api, bytes(message), &compatibility), c.result);
            EXPECT_EQ(compatibility, c.compatibility);
            expectStored(message, prefixed(c.message));
            EXPECT_EQ(ask(c.api, nullptr, nullptr), c.result);
        }
        EXPECT_EQ(c__xapiversion(c.api, nullptr, nullptr), c.result);
    }
}

TEST(InterfaceChecks, SignatureAnswersInBothForms) {
    const std::string number = " has wrong number of arguments.";
    const std::string types = " has wrong argument types.";
    const std::string unknown = " cannot be found in library.";
    const std::string longName(255, 'n');
    using Codes = std::vector<std::int32_t>;
    struct Case {
        std::string name;
        std::int32_t nbArguments;
        Codes signature;
        std::string reason;  // empty: accepted
    };
    const Case cases[] = {
        {"vexCallSolver", 0, {3}, ""},
        {"vexCallSolver", 0, {3, 99, -1}, ""},
        {"vexCallSolver", 0, {1}, types},
        {"vexCallSolver", 1, {3}, number},
        {"vexCallSolver", -1, {3}, number},
        {"vexReadyAPI", 2, {3, 1, 1}, ""},
        {"vexReadyAPI", 2, {3, 1, 2}, types},
        {"vexReadyAPI", 2, {3, 2, 1}, types},
        {"vexReadyAPI", 2, {0, 1, 1}, types},
        {"vexReadyAPI", 1, {3, 1, 1}, number},
        {"vexReadyAPI", 3, {3, 1, 1, 1}, number},
        {"vexcallsolver", 0, {3}, unknown},
        {"vexReadyAPI ", 2, {3, 1, 1}, unknown},
        {"vexReadyAP", 2, {3, 1, 1}, unknown},
        {"vexCreate", 0, {3}, unknown},
        {"vexInitialize", 0, {0}, unknown},
        {"", 0, {3}, unknown},
        {longName, 0, {3}, unknown},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::int32_t result = c.reason.empty() ? 1 : 0;
        const std::string text =
            c.reason.empty() ? "" : ("vexcclib: " + c.name + c.reason).substr(0, 255);
        std::string message(300, '#');
        EXPECT_EQ(c__xcheck(c.name.c_str(), c.nbArguments, c.signature.data(), message.data()),
                  result);
        expectStored(message, text + '\0');
        std::string name = prefixed(c.name) + "no terminator";
        for (auto* ask : {d__xcheck, d__vexxcheck}) {
            message.assign(300, '#');
            EXPECT_EQ(ask(bytes(name), c.nbArguments, c.signature.data(), bytes(message)), result);
            expectStored(message, prefixed(text));
            EXPECT_EQ(ask(bytes(name), c.nbArguments, c.signature.data(), nullptr), result);
        }
        EXPECT_EQ(c__xcheck(c.name.c_str(), c.nbArguments, c.signature.data(), nullptr), result);
    }
}

TEST(InterfaceChecks, NullNamesAndSignaturesAreRefused) {
    std::string message(300, '#');
    EXPECT_EQ(c__xcheck(nullptr, 0, nullptr, message.data()), 0);
    EXPECT_STREQ(message.c_str(), "vexcclib:  cannot be found in library.");
    EXPECT_EQ(d__xcheck(nullptr, 0, nullptr, nullptr), 0);
    EXPECT_EQ(c__xcheck("vexCallSolver", 0, nullptr, message.data()), 0);
    EXPECT_STREQ(message.c_str(), "vexcclib: vexCallSolver has wrong argument types.");
}

}  // namespace
