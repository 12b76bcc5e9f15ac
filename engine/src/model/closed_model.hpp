#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "localsolver.h"
#include "model/value.hpp"

namespace engine {

using ExpressionIndex = std::int32_t;
using DecisionIndex = std::int32_t;

/// A closed interval; lower > upper: empty.
struct Interval {
    double lower;
    double upper;
    [[nodiscard]] bool isEmpty() const { return lower > upper; }
};

/// An objective: its expression and direction.
struct Objective {
    ExpressionIndex expression;
    bool maximise;
};

/// A frozen expression graph in flat arrays: what proving, evaluating and searching read.
///
/// Immutable after ls_close and shared by all search threads. Expressions keep the index under
/// which they were created; an operand may have a larger index than its user, so passes over the
/// graph follow `order`.
struct ClosedModel {
    std::vector<std::uint8_t> op;            ///< [nbExpressions] an ls_operator
    std::vector<std::uint8_t> isDouble;      ///< [nbExpressions] static type of the value
    std::vector<std::int32_t> firstOperand;  ///< [nbExpressions + 1] into operand
    std::vector<ExpressionIndex> operand;    ///< in the order of addition
    std::vector<std::int32_t> firstUser;     ///< [nbExpressions + 1] into user
    std::vector<ExpressionIndex> user;       ///< once per operand position; ascending order
    std::vector<std::int32_t> rank;          ///< [nbExpressions] position in order
    std::vector<ExpressionIndex> order;      ///< operands before their users
    std::vector<Value> constantValue;        ///< [nbExpressions] of constants, else integer 0

    std::vector<ExpressionIndex> decision;  ///< [nbDecisions] in the order of creation
    std::vector<DecisionIndex> decisionOf;  ///< [nbExpressions] or -1
    /// [nbDecisions] domain; integral bounds for booleans and integers, possibly empty.
    std::vector<Interval> domain;
    std::vector<ExpressionIndex> constraint;  ///< in the order of addition, maybe repeated
    std::vector<Objective> objective;         ///< by priority

    [[nodiscard]] std::int32_t nbExpressions() const {
        return static_cast<std::int32_t>(op.size());
    }
    [[nodiscard]] std::int32_t nbDecisions() const {
        return static_cast<std::int32_t>(decision.size());
    }
    [[nodiscard]] ls_operator operatorOf(ExpressionIndex e) const {
        return static_cast<ls_operator>(op[static_cast<std::size_t>(e)]);
    }
    [[nodiscard]] std::span<const ExpressionIndex> operandsOf(ExpressionIndex e) const {
        return slice(operand, firstOperand, e);
    }
    [[nodiscard]] std::span<const ExpressionIndex> usersOf(ExpressionIndex e) const {
        return slice(user, firstUser, e);
    }
    /// Boolean or integer decision.
    [[nodiscard]] bool isDiscrete(DecisionIndex d) const {
        return operatorOf(decision[static_cast<std::size_t>(d)]) != LS_OP_FLOAT;
    }

private:
    static std::span<const ExpressionIndex> slice(const std::vector<ExpressionIndex>& all,
                                                  const std::vector<std::int32_t>& first,
                                                  ExpressionIndex e) {
        const auto i = static_cast<std::size_t>(e);
        return std::span(all).subspan(static_cast<std::size_t>(first[i]),
                                      static_cast<std::size_t>(first[i + 1] - first[i]));
    }
};

/// Values of all decisions, [nbDecisions], integer Values for booleans and integers.
using Point = std::vector<Value>;

}  // namespace engine
