#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "operators/inverse.hpp"

namespace engine {

/// What incremental evaluation derives from a model once: who must hear of a change, in which
/// order, and which expressions carry a distance. Read-only after construction.
///
/// A product of an expression and a constant whose only user is a sum is no node of its own: the
/// sum hears of the expression itself, with the constant as factor. In linear rows this saves half
/// of all steps.
class Plan {
public:
    /// A change of an expression reaches `target`.
    struct Link {
        ExpressionIndex target;
        bool isTerm;   ///< of the sum `target`, with `factor`
        Value factor;  ///< integer 1 unless a product was absorbed
    };

    explicit Plan(const ClosedModel& model);

    [[nodiscard]] const ClosedModel& model() const { return model_; }
    [[nodiscard]] std::span<const Link> linksOf(ExpressionIndex e) const {
        const std::size_t i = index(e);
        return std::span(link_).subspan(firstLink_[i], firstLink_[i + 1] - firstLink_[i]);
    }
    /// 0 for leaves; every operand has a smaller level than its user.
    [[nodiscard]] std::int32_t levelOf(ExpressionIndex e) const { return level_[index(e)]; }
    [[nodiscard]] std::int32_t nbLevels() const { return nbLevels_; }
    /// Position among the sums, or -1.
    [[nodiscard]] std::int32_t sumOf(ExpressionIndex e) const { return sumIndex_[index(e)]; }
    [[nodiscard]] std::int32_t nbSums() const { return nbSums_; }
    /// Position among the expressions with a distance, or -1.
    [[nodiscard]] std::int32_t logicOf(ExpressionIndex e) const { return logicIndex_[index(e)]; }
    /// [nbExpressions] the same of all.
    [[nodiscard]] std::span<const std::int32_t> logicPositions() const { return logicIndex_; }
    /// Expressions with a distance by their position.
    [[nodiscard]] const std::vector<ExpressionIndex>& logic() const { return logic_; }
    /// Unit of the relation's gap: the size of the coefficients in it, 1 for other expressions.
    [[nodiscard]] double scaleOf(std::int32_t logicIndex) const {
        return scale_[static_cast<std::size_t>(logicIndex)];
    }
    /// The same unit for any relation, also one without a distance.
    [[nodiscard]] double scaleOfRelation(ExpressionIndex e) const;
    /// Root mean square of the coefficients of a sum's terms, 1 for other expressions that a
    /// decision can change, 0 for those that none can.
    [[nodiscard]] double sizeOfCoefficients(ExpressionIndex e) const;
    /// Ledger entry of a constraint, or -1.
    [[nodiscard]] std::int32_t entryOf(ExpressionIndex e) const { return entry_[index(e)]; }
    /// Constraints without repetition, by ledger entry.
    [[nodiscard]] const std::vector<ExpressionIndex>& constraints() const { return constraint_; }
    /// A product that its sum has taken over: it is never recomputed.
    [[nodiscard]] bool isAbsorbed(ExpressionIndex e) const { return isAbsorbed_[index(e)] != 0; }
    /// No decision can change the value.
    [[nodiscard]] bool isFixed(ExpressionIndex e) const { return isFixed_[index(e)] != 0; }
    /// [nbExpressions] each, 0 or 1.
    [[nodiscard]] std::span<const std::uint8_t> absorbed() const { return isAbsorbed_; }
    [[nodiscard]] std::span<const std::uint8_t> fixed() const { return isFixed_; }
    /// Operand `k` of the sum `e`.
    [[nodiscard]] Term termOf(ExpressionIndex e, std::size_t k) const {
        return engine::termOf(model_, isAbsorbed_, e, k);
    }

private:
    static std::size_t index(ExpressionIndex e) { return static_cast<std::size_t>(e); }

    void findLevels();
    void findAbsorbed();
    void findLogic();
    void findScales();
    void findLinks();
    void addLinksOf(ExpressionIndex user, std::vector<std::size_t>& next);

    const ClosedModel& model_;
    std::vector<std::size_t> firstLink_;
    std::vector<Link> link_;
    std::vector<std::int32_t> level_;
    std::int32_t nbLevels_ = 0;
    std::vector<std::int32_t> sumIndex_;
    std::int32_t nbSums_ = 0;
    std::vector<std::int32_t> logicIndex_;
    std::vector<ExpressionIndex> logic_;
    std::vector<double> scale_;
    std::vector<std::int32_t> entry_;
    std::vector<ExpressionIndex> constraint_;
    std::vector<std::uint8_t> isFixed_;
    std::vector<std::uint8_t> isAbsorbed_;
};

}  // namespace engine
