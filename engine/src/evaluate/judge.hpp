#pragma once

#include <vector>

#include "model/closed_model.hpp"

namespace engine {

/// What a point is worth: whether every constraint holds (relations within the engine's
/// tolerance) and every objective is a number, and the objectives' values by priority.
struct Verdict {
    bool feasible = false;
    std::vector<Value> objectives;
};

/// Evaluates every expression at `point` from scratch. This is the only judge of feasibility:
/// whatever a search or a back end claims is judged here before it becomes the incumbent.
///
/// @param point   [nbDecisions], inside the decisions' domains.
/// @param values  receives the value of every expression, [nbExpressions].
/// O(operands). Thread-safe.
Verdict judge(const ClosedModel& model, const Point& point, std::vector<Value>& values);

/// Is `a` strictly better than `b`: feasible before infeasible, then lexicographically by
/// objective in its direction? Two infeasible points are never better than each other.
bool isBetter(const ClosedModel& model, const Verdict& a, const Verdict& b);

}  // namespace engine
