#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "double/exchange.hpp"
#include "double/whole_call.hpp"

/// How much of the thread's stack a nested definition takes. Threads of Windows have 1 MiB.

namespace {

TEST(Nesting, LeavesMostOfASmallStackFree) {
    constexpr int length = 150;
    std::string instance = "min 0";  // an instruction list takes most
    for (int k = 1; k <= length; ++k) {
        const std::string number = std::to_string(k);
        instance +=
            " ; e" + number + " : x" + number + " + [ 1:x" + std::to_string(k + 1) + " ] = 1";
    }
    std::uintptr_t lowest = UINTPTR_MAX;
    std::uintptr_t highest = 0;
    // Every definition asks for its right-hand side when all that it needs is built.
    doubles::runCase({instance, "pairs 150", "hide ls_close"}, [&] {
        doubles::exchange().listen([&](const std::string& name, const auto&, const auto&) {
            const char here = 0;
            if (name != "nmoGetRhsOne") return;
            lowest = std::min(lowest, reinterpret_cast<std::uintptr_t>(&here));
            highest = std::max(highest, reinterpret_cast<std::uintptr_t>(&here));
        });
    });
    const std::uintptr_t used = (highest - lowest) / (length - 1);
    EXPECT_LT(used, 5120U);  // 750 KiB at the limit
    EXPECT_GT(used, 100U);
}

}  // namespace
