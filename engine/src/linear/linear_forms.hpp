#pragma once

#include <map>
#include <optional>
#include <span>
#include <vector>

#include "evaluate/propagator.hpp"
#include "linear/curvature.hpp"
#include "linear/linear_model.hpp"
#include "operators/linear.hpp"

namespace engine {

/// Turns expressions into linear forms over the columns of a growing linear model.
///
/// Columns are made when first used: one per decision, one per product of booleans. The model and
/// the vectors handed in must outlive it.
class LinearForms final : public LinearTerms {
public:
    LinearForms(const ClosedModel& model, const Propagator& propagator,
                const std::vector<Value>& values, LinearModel& out);

    /// From which side forms are bounded: 1 from above, -1 from below, 0 from both or unknown. In
    /// forms that are bounded from one side, expressions that curve the right way become columns.
    /// @param curvature  [nbExpressions], outlives this; not read while the side is 0.
    void boundFrom(int side, const std::vector<CurvatureOfExpression>* curvature) {
        side_ = side;
        curvature_ = curvature;
    }
    /// `e`, or nothing when it is not linear. Explicit stack, no recursion.
    std::optional<LinearForm> formOf(ExpressionIndex e) { return formOf(e, 1.0, noExpression); }
    /// first - second.
    std::optional<LinearForm> differenceOf(ExpressionIndex first, ExpressionIndex second) {
        return formOf(first, 1.0, second);
    }
    /// Whether `e` depends on no decision.
    [[nodiscard]] bool isConstant(ExpressionIndex e) const override {
        return !depends_[static_cast<std::size_t>(e)];
    }
    /// A boolean decision or an integer one within [0, 1].
    [[nodiscard]] bool isBinary(ExpressionIndex e) const override;
    std::int32_t makeColumn(double lower, double upper, bool isInteger);
    /// Adds lower <= form <= upper; the form's constant is moved to the sides.
    /// @param tolerance  of the judge, absolute.
    void addRow(const LinearForm& form, double lower, double upper, double tolerance);

private:
    static constexpr ExpressionIndex noExpression = -1;
    struct Term {
        ExpressionIndex expression;
        double factor;
    };

    std::optional<LinearForm> formOf(ExpressionIndex e, double factor, ExpressionIndex minus);
    bool expand(const Term& term);
    [[nodiscard]] double numberOf(ExpressionIndex e) const override {
        return values_[static_cast<std::size_t>(e)].asDouble();
    }
    void addConstant(double constant) override { constant_ += constant; }
    void addTerm(ExpressionIndex e, double factor) override {
        --workLeft_;
        stack_.push_back({e, factor});
    }
    bool addProduct(std::span<const ExpressionIndex> factors, double factor) override;
    bool addCurved(const Term& term);
    void addColumnsBelow(ExpressionIndex e);
    void addColumn(std::int32_t column, double factor);
    std::int32_t columnOf(DecisionIndex d);
    std::int32_t productColumn(const std::vector<ExpressionIndex>& binaries, ExpressionIndex other);
    void addProductRows(std::int32_t z, const std::vector<std::int32_t>& binaries,
                        std::int32_t other, double bound, bool isLowerBound);
    LinearForm takeForm();

    const ClosedModel& model_;
    const Propagator& propagator_;
    const std::vector<Value>& values_;
    LinearModel& out_;
    std::vector<std::uint8_t> depends_;   ///< [nbExpressions] on a decision
    std::vector<std::int32_t> columnOf_;  ///< [nbDecisions] or -1
    std::map<std::vector<ExpressionIndex>, std::int32_t> productColumn_;
    std::map<ExpressionIndex, std::int32_t> curvedColumn_;
    int side_ = 0;
    const std::vector<CurvatureOfExpression>* curvature_ = nullptr;
    std::vector<Term> stack_;
    std::vector<double> total_;            ///< [nbColumns] zero outside `touched_`
    std::vector<std::uint8_t> isTouched_;  ///< [nbColumns]
    std::vector<std::int32_t> touched_;
    double constant_ = 0.0;
    std::int64_t workLeft_;
};

}  // namespace engine
