#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "operators/operands.hpp"
#include "operators/random.hpp"

namespace engine {

/// What an expression is to become: a truth value or a number.
struct Goal {
    bool isTruth;
    bool truth;
    double number;
    int direction;  ///< -1: at most `number`, 1: at least, 0: as near as possible

    static Goal ofTruth(bool truth) { return {true, truth, 0.0, 0}; }
    static Goal ofNumber(double number, int direction) { return {false, false, number, direction}; }
};

/// The operand that is to move, and where to.
struct InverseStep {
    ExpressionIndex operand;
    Goal goal;
};
using MaybeStep = std::optional<InverseStep>;

/// An operand of a sum: a factor of 1, or a constant times an expression.
struct Term {
    ExpressionIndex expression;
    Value factor;
};

/// Operand `k` of the sum `e`; a product with a constant that `isAbsorbed` [nbExpressions] marks is
/// seen as a term.
Term termOf(const ClosedModel& model, std::span<const std::uint8_t> isAbsorbed, ExpressionIndex e,
            std::size_t k);

/// What surrounds an operator that is to be solved for one operand, [nbExpressions] each.
struct InverseSurroundings {
    std::span<const Value> values;  ///< absorbed products excepted
    std::span<const std::uint8_t> isFixed;
    std::span<const std::uint8_t> isAbsorbed;
    std::span<const Interval> domain;  ///< [nbDecisions]
    Random& random;
};

/// The operands' values, what may move, and chance, by which one of them is chosen.
class InverseOperands : public Operands {
public:
    InverseOperands(const ClosedModel& model, ExpressionIndex e,
                    const InverseSurroundings& surroundings)
        : Operands(model, e), surroundings_(surroundings) {}

    [[nodiscard]] Value valueOf(ExpressionIndex e) const;
    [[nodiscard]] double numberOf(ExpressionIndex e) const { return valueOf(e).asDouble(); }
    [[nodiscard]] Value value(std::size_t k) const { return valueOf(indexOf(k)); }
    [[nodiscard]] double number(std::size_t k) const { return value(k).asDouble(); }
    [[nodiscard]] Value own() const { return valueOf(expression()); }
    [[nodiscard]] double ownNumber() const { return own().asDouble(); }
    /// No decision can change it.
    [[nodiscard]] bool isFixed(ExpressionIndex e) const {
        return surroundings_.isFixed[static_cast<std::size_t>(e)] != 0;
    }
    [[nodiscard]] bool isFixedAt(std::size_t k) const { return isFixed(indexOf(k)); }
    [[nodiscard]] Random& random() const { return surroundings_.random; }

    [[nodiscard]] Term term(std::size_t k) const {
        return termOf(model(), surroundings_.isAbsorbed, expression(), k);
    }
    /// Can `e` move towards `wanted` at all?
    [[nodiscard]] bool hasRoom(ExpressionIndex e, double wanted) const {
        const DecisionIndex d = model().decisionOf[static_cast<std::size_t>(e)];
        if (d < 0) return true;
        const Interval domain = surroundings_.domain[static_cast<std::size_t>(d)];
        const double current = numberOf(e);
        return wanted > current ? current < domain.upper : current > domain.lower;
    }
    /// Of two operands: shall the first move? By chance where both can.
    [[nodiscard]] bool movesFirst(ExpressionIndex first, ExpressionIndex second) const {
        return isFixed(second) || (!isFixed(first) && random().chance(0.5));
    }

    /// A random operand that can move and for which `accepts` holds, scanning a bounded number.
    template <typename Predicate>
    [[nodiscard]] std::optional<ExpressionIndex> anyOperand(Predicate accepts) const {
        constexpr std::size_t longestScan = 64;
        if (size() == 0) return std::nullopt;
        std::size_t k = random().below(size());
        for (std::size_t n = 0; n < size() && n < longestScan; ++n) {
            if (!isFixedAt(k) && accepts(indexOf(k))) return indexOf(k);
            if (++k == size()) k = 0;
        }
        return std::nullopt;
    }
    [[nodiscard]] std::optional<ExpressionIndex> anyOperand() const {
        return anyOperand([](ExpressionIndex) { return true; });
    }

    /// The `m`-th root that keeps the sign of the current value, with the direction turned along.
    [[nodiscard]] Goal rootGoal(double current, double m, const Goal& goal) const;

private:
    const InverseSurroundings& surroundings_;
};

constexpr int turned(int direction, double factor) {
    return factor < 0.0 ? -direction : direction;
}

}  // namespace engine
