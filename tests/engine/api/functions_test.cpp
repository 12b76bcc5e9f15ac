// The table of functions agrees with the declarations; check_exports.py compares it with what the
// library exports.

#include <gtest/gtest.h>

#include "localsolver.h"

namespace {

template <class Result, class... Arguments>
constexpr int arityOf(Result (*)(Arguments...)) {
    return static_cast<int>(sizeof...(Arguments));
}

TEST(Functions, TheTableGivesTheDeclaredNumbersOfArguments) {
#define LS_FUNCTION(name, arity) EXPECT_EQ(arityOf(&(name)), arity) << #name;
#include "localsolver_functions.inc"
#undef LS_FUNCTION
}

}  // namespace
