#pragma once

#include <array>

#include "localsolver.h"

namespace engine {

/// How a relation reads from left to right.
struct Relation {
    ls_operator op;
    ls_operator negation;  ///< holds exactly when this one does not
    int direction;         ///< -1: the left side is at most the right one, 1: at least, 0: neither
    bool isStrict;         ///< does not hold between equal sides

    [[nodiscard]] constexpr bool isEquation() const { return direction == 0 && !isStrict; }
    /// @param order  of the left side to the right one, 0 within the tolerance.
    [[nodiscard]] constexpr bool holds(int order) const {
        if (direction == 0) return (order != 0) == isStrict;
        return isStrict ? order == direction : order != -direction;
    }
};

constexpr std::array<Relation, 6> relations{{
    {LS_OP_EQ, LS_OP_NEQ, 0, false},
    {LS_OP_NEQ, LS_OP_EQ, 0, true},
    {LS_OP_GEQ, LS_OP_LT, 1, false},
    {LS_OP_LEQ, LS_OP_GT, -1, false},
    {LS_OP_GT, LS_OP_LEQ, 1, true},
    {LS_OP_LT, LS_OP_GEQ, -1, true},
}};

constexpr bool isRelation(ls_operator op) {
    return op >= LS_OP_EQ && op <= LS_OP_LT;
}
/// @param op  a relation.
constexpr const Relation& relationOf(ls_operator op) {
    return relations[static_cast<std::size_t>(op - LS_OP_EQ)];
}
constexpr Relation negated(const Relation& relation) {
    return relationOf(relation.negation);
}

constexpr bool areInOrder(const std::array<Relation, 6>& table) {
    for (const Relation& r : table) {
        if (relationOf(r.op).op != r.op || negated(negated(r)).op != r.op) return false;
    }
    return true;
}
static_assert(areInOrder(relations), "in the order of numbers; negations in pairs");

}  // namespace engine
