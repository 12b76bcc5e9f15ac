#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "nonlinear/quantity.hpp"

/// The functions that instructions call.

namespace norv {

enum class Function : std::int32_t {
    ceil = 1,
    floor = 2,
    round = 3,
    min = 7,
    max = 8,
    sqr = 9,
    exp = 10,
    log = 11,
    log10 = 12,
    sqrt = 13,
    abs = 14,
    cos = 15,
    sin = 16,
    power = 21,
    pi = 45,
    log2 = 50,
    boolnot = 51,
    booland = 52,
    boolor = 53,
    boolxor = 54,
    boolimp = 55,
    booleqv = 56,
    relopeq = 57,
    relopgt = 58,
    relopge = 59,
    reloplt = 60,
    relople = 61,
    relopne = 62,
    ifthen = 63,
    rpower = 64,
    edist = 65,
    div = 66,
    cvpower = 74,
    vcpower = 75,
    signpower = 92,
    tan = 100,
    poly = 108,
};

struct FunctionTraits {
    static constexpr std::int32_t anyCount = -1;

    Function code;
    std::string_view name;
    std::int32_t nbArguments;  ///< or anyCount
};

constexpr std::array<FunctionTraits, 37> functionTable = {{
    {Function::ceil, "ceil", 1},
    {Function::floor, "floor", 1},
    {Function::round, "round", 1},
    {Function::min, "min", 2},
    {Function::max, "max", 2},
    {Function::sqr, "sqr", 1},
    {Function::exp, "exp", 1},
    {Function::log, "log", 1},
    {Function::log10, "log10", 1},
    {Function::sqrt, "sqrt", 1},
    {Function::abs, "abs", 1},
    {Function::cos, "cos", 1},
    {Function::sin, "sin", 1},
    {Function::power, "power", 2},
    {Function::pi, "pi", 0},
    {Function::log2, "log2", 1},
    {Function::boolnot, "boolnot", 1},
    {Function::booland, "booland", 2},
    {Function::boolor, "boolor", 2},
    {Function::boolxor, "boolxor", 2},
    {Function::boolimp, "boolimp", 2},
    {Function::booleqv, "booleqv", 2},
    {Function::relopeq, "relopeq", 2},
    {Function::relopgt, "relopgt", 2},
    {Function::relopge, "relopge", 2},
    {Function::reloplt, "reloplt", 2},
    {Function::relople, "relople", 2},
    {Function::relopne, "relopne", 2},
    {Function::ifthen, "ifthen", 3},
    {Function::rpower, "rpower", 2},
    {Function::edist, "edist", FunctionTraits::anyCount},
    {Function::div, "div", 2},
    {Function::cvpower, "cvpower", 2},
    {Function::vcpower, "vcpower", 2},
    {Function::signpower, "signpower", 2},
    {Function::tan, "tan", 1},
    {Function::poly, "poly", FunctionTraits::anyCount},
}};

/// Ascending by code, so none is there twice.
static_assert([] {
    for (std::size_t k = 1; k < functionTable.size(); ++k) {
        if (functionTable[k - 1].code >= functionTable[k].code) return false;
    }
    return true;
}());

/// By code: the row of functionTable, or -1.
constexpr auto functionRows = [] {
    std::array<std::int16_t, 113> rows{};
    rows.fill(-1);
    for (std::size_t k = 0; k < functionTable.size(); ++k)
        rows[static_cast<std::size_t>(functionTable[k].code)] = static_cast<std::int16_t>(k);
    return rows;
}();

/// Null for a code without function.
constexpr const FunctionTraits* findFunction(std::int32_t code) {
    if (code < 0 || code >= static_cast<std::int32_t>(functionRows.size())) return nullptr;
    const std::int16_t row = functionRows[static_cast<std::size_t>(code)];
    return row < 0 ? nullptr : &functionTable[static_cast<std::size_t>(row)];
}

constexpr const FunctionTraits& traitsOf(Function function) {
    return *findFunction(static_cast<std::int32_t>(function));
}

/// Is its value 0 or 1 whatever the arguments?
constexpr bool isLogical(Function function) {
    return function >= Function::boolnot && function <= Function::relopne;
}

constexpr bool isRelation(Function function) {
    return function >= Function::relopeq && function <= Function::relopne;
}

/// May a call with many arguments be folded into calls with two, from the left?
constexpr bool isFoldable(Function function) {
    return function == Function::min || function == Function::max ||
           function == Function::booland || function == Function::boolor ||
           function == Function::boolxor;
}

/// How many stack entries a call takes.
/// @param announced  the count of arguments in force: negative when there is none.
constexpr std::int32_t nbConsumed(const FunctionTraits& function, std::int32_t announced) {
    if (function.nbArguments != FunctionTraits::anyCount) return function.nbArguments;
    return function.code == Function::edist ? std::max(announced, 1) : announced;
}

/// The value of a call; docs/instruction-code.md tells what each function means.
/// @param arguments  as many as the function consumes, the first one first.
[[nodiscard]] Quantity call(Function function, std::span<const Quantity> arguments);

/// Does the relation hold between equal sides?
constexpr bool holdsWhenEqual(Function relation) {
    return relation == Function::relopeq || relation == Function::relopge ||
           relation == Function::relople;
}

/// "<", "<=", "=", ">=", ">" or "<>".
[[nodiscard]] const char* signOf(Function relation);

}  // namespace norv
