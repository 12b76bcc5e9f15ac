#pragma once

#include <cstdint>
#include <type_traits>

#include "api/error_hook.hpp"
#include "control/solver.hpp"
#include "localsolver.h"
#include "model/refusal.hpp"

/// The object behind the interface's opaque handle.
struct ls_solver {
    engine::Solver core;
};

/// The contract of the C functions, checked in their first lines: each function opens with
/// `requireState` and the checks of its arguments, and does the rest without any. All are refused
/// as Refusals with a text that says what was found and what is allowed.
namespace engine::contract {

/// Sets of states, as bits.
using StateSet = unsigned;
constexpr StateSet bitOf(ls_state state) {
    return 1U << static_cast<unsigned>(state);
}
constexpr StateSet modelling = bitOf(LS_STATE_MODELING);
constexpr StateSet closedOrSolved = bitOf(LS_STATE_CLOSED) | bitOf(LS_STATE_SOLVED);
constexpr StateSet notDuringSolve = modelling | closedOrSolved;
constexpr StateSet notRunning = notDuringSolve | bitOf(LS_STATE_PAUSED);
constexpr StateSet withValues = closedOrSolved | bitOf(LS_STATE_PAUSED);
constexpr StateSet duringSolve = bitOf(LS_STATE_RUNNING) | bitOf(LS_STATE_PAUSED);
constexpr StateSet anyState = notRunning | bitOf(LS_STATE_RUNNING);
constexpr StateSet notModelling = anyState & ~modelling;

/// The core of a solver that is not null and in one of the states.
Solver& requireState(ls_solver* solver, StateSet allowed, RefusalSite site = RefusalSite::here());

ExpressionIndex requireExpression(const Solver& solver, int expr,
                                  RefusalSite site = RefusalSite::here());
/// A position of one of the model's lists. @param list  its name in the plural.
int requirePosition(const char* list, int position, std::int64_t size,
                    RefusalSite site = RefusalSite::here());
/// A choice of the interface: an operator, a direction, a callback type.
int requireChoice(const char* what, int number, int lowest, int highest,
                  RefusalSite site = RefusalSite::here());
template <class Integer>
Integer requireInRange(const ParameterRange& range, Integer value,
                       RefusalSite site = RefusalSite::here());
double requireNumber(double value, RefusalSite site = RefusalSite::here());
/// Any pointer that must not be null. @param what  its name.
void requireGiven(const char* what, bool isGiven, RefusalSite site = RefusalSite::here());

/// Second half of the two-call form of texts: cuts `text` to the buffer.
/// @return number of characters of the whole text, the terminator included.
int copyText(const std::string& text, char* buffer, int length,
             RefusalSite site = RefusalSite::here());

/// Runs the body of a C function. Whatever it throws goes to the error hook as the very last step;
/// when the hook returns, the function returns `neutral`.
template <class Result, class Body>
Result guarded(const char* function, Result neutral, Body body) {
    Failure failure;
    try {
        return body();
    } catch (...) {
        failure = failureOfCurrentException();
    }
    callErrorHook(failure, function);
    return neutral;
}

/// The same for a function without result.
template <class Body>
void guarded(const char* function, Body body) {
    guarded(function, 0, [&] {
        body();
        return 0;
    });
}

}  // namespace engine::contract
