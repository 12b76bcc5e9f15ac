#include "api/contract.hpp"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstring>
#include <limits>

#include "control/description.hpp"

namespace engine::contract {

namespace {

std::string namesOf(StateSet states) {
    std::string text;
    for (int s = LS_STATE_MODELING; s <= LS_STATE_SOLVED; ++s) {
        if ((states & bitOf(static_cast<ls_state>(s))) == 0) continue;
        if (!text.empty()) text += ", ";
        text += stateName(s);
    }
    return text;
}

}  // namespace

Solver& requireState(ls_solver* solver, StateSet allowed, RefusalSite site) {
    requireGiven("solver", solver != nullptr, site);
    const ls_state state = solver->core.state();
    if ((allowed & bitOf(state)) == 0) {
        throw Refusal(LS_ERROR_STATE,
                      formatText("not allowed in the state %s, only in: %s", stateName(state),
                                 namesOf(allowed).c_str()),
                      site);
    }
    return solver->core;
}

ExpressionIndex requireExpression(const Solver& solver, int expr, RefusalSite site) {
    const std::int32_t n = solver.model.nbExpressions();
    if (expr < 0 || expr >= n) {
        throw Refusal(LS_ERROR_ARGUMENT,
                      formatText("expression %d does not exist, the model has %d expressions, "
                                 "counted from 0",
                                 expr, n),
                      site);
    }
    return expr;
}

int requirePosition(const char* list, int position, std::int64_t size, RefusalSite site) {
    if (position < 0 || position >= size) {
        throw Refusal(
            LS_ERROR_ARGUMENT,
            formatText("position %d does not exist, there are %" PRId64 " %s, counted from 0",
                       position, size, list),
            site);
    }
    return position;
}

int requireChoice(const char* what, int number, int lowest, int highest, RefusalSite site) {
    if (number < lowest || number > highest) {
        throw Refusal(
            LS_ERROR_ARGUMENT,
            formatText("%s %d does not exist, allowed are %d to %d", what, number, lowest, highest),
            site);
    }
    return number;
}

template <class Integer>
Integer requireInRange(const ParameterRange& range, Integer value, RefusalSite site) {
    if (value < range.lowest || value > range.highest) {
        throw Refusal(
            LS_ERROR_ARGUMENT,
            formatText("%s %" PRId64 " is out of range, allowed are %" PRId64 " to %" PRId64,
                       range.name, static_cast<std::int64_t>(value), range.lowest, range.highest),
            site);
    }
    return value;
}
template int requireInRange(const ParameterRange&, int, RefusalSite);
template std::int64_t requireInRange(const ParameterRange&, std::int64_t, RefusalSite);

double requireNumber(double value, RefusalSite site) {
    if (std::isnan(value)) throw Refusal(LS_ERROR_VALUE, "NaN given, a number is needed", site);
    return value;
}

void requireGiven(const char* what, bool isGiven, RefusalSite site) {
    if (!isGiven) {
        throw Refusal(LS_ERROR_ARGUMENT, formatText("the %s is null", what), site);
    }
}

int copyText(const std::string& text, char* buffer, int length, RefusalSite site) {
    if (length < 0) {
        throw Refusal(LS_ERROR_ARGUMENT,
                      formatText("buffer length %d is negative, allowed are 0 and more", length),
                      site);
    }
    if (length > 0) {
        requireGiven("text buffer", buffer != nullptr, site);
        const auto kept = std::min(text.size(), static_cast<std::size_t>(length) - 1);
        std::memcpy(buffer, text.data(), kept);
        buffer[kept] = '\0';
    }
    constexpr auto longest = static_cast<std::size_t>(std::numeric_limits<int>::max());
    return static_cast<int>(std::min(text.size() + 1, longest));
}

}  // namespace engine::contract
