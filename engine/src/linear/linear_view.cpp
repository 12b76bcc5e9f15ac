#include "linear/linear_view.hpp"

#include <algorithm>
#include <cmath>

#include "linear/activity.hpp"
#include "linear/linear_forms.hpp"
#include "operators/operator_row.hpp"

namespace engine {
namespace {

/// Multipliers beyond this would let a rounding error of a binary column free its relation.
constexpr double largestBigM = 1e6;

/// lower <= form <= upper.
struct Row {
    LinearForm form;
    double lower;
    double upper;
    double tolerance;
};

constexpr double exact = 0.0;

class LinearView {
public:
    /// @param curvature  none: only what is linear is understood.
    LinearView(const ClosedModel& model, const Propagator& propagator,
               const std::vector<Value>& values,
               const std::vector<CurvatureOfExpression>* curvature)
        : model_(model),
          propagator_(propagator),
          values_(values),
          curvature_(curvature),
          forms_(model, propagator, values, out_) {}

    std::optional<LinearModel> run() {
        for (const Objective& o : model_.objective) {
            boundFrom(o.maximise ? -1 : 1);
            std::optional<LinearForm> form = forms_.formOf(o.expression);
            if (!form) return std::nullopt;
            out_.objective.push_back({*std::move(form), o.maximise});
        }
        pending_.assign(model_.constraint.rbegin(), model_.constraint.rend());
        while (!pending_.empty()) {
            const ExpressionIndex e = pending_.back();
            pending_.pop_back();
            if (!addConstraint(e)) return std::nullopt;
        }
        return std::move(out_);
    }

private:
    void boundFrom(int side) { forms_.boundFrom(curvature_ == nullptr ? 0 : side, curvature_); }
    bool addConstraint(ExpressionIndex e);
    bool addAlternatives(ExpressionIndex e);
    static bool addLiteral(const LinearForm& literal, LinearForm& sum);
    bool addIndicated(std::int32_t binary, const Row& row);
    std::optional<Row> rowOf(ExpressionIndex e);
    std::optional<Row> rowOfRelation(ExpressionIndex e);

    const ClosedModel& model_;
    const Propagator& propagator_;
    const std::vector<Value>& values_;
    const std::vector<CurvatureOfExpression>* curvature_;
    LinearModel out_;
    LinearForms forms_;
    std::vector<ExpressionIndex> pending_;  ///< must hold, not yet in the model
};

bool LinearView::addConstraint(ExpressionIndex e) {
    if (forms_.isConstant(e)) {
        // A constraint that never holds is a row without columns that asks for 1.
        if (!values_[static_cast<std::size_t>(e)].isTrue()) {
            forms_.addRow({}, 1.0, infinity, exact);
        }
        return true;
    }
    const LogicForm form = engine::rowOf(model_.operatorOf(e)).logic;
    if (form == LogicForm::All) {
        const auto operands = model_.operandsOf(e);
        pending_.insert(pending_.end(), operands.rbegin(), operands.rend());
        return true;
    }
    if (form == LogicForm::Any) return addAlternatives(e);
    const std::optional<Row> row = rowOf(e);
    if (row) forms_.addRow(row->form, row->lower, row->upper, row->tolerance);
    return row.has_value();
}

/// The row that says that `e` holds: a relation, or a binary or its negation that must be 1.
std::optional<Row> LinearView::rowOf(ExpressionIndex e) {
    const bool isNegation = model_.operatorOf(e) == LS_OP_NOT;
    if (!isNegation && !forms_.isBinary(e)) return rowOfRelation(e);
    boundFrom(0);
    std::optional<LinearForm> form = forms_.formOf(e);
    if (!form) return std::nullopt;
    return Row{*std::move(form), 1.0, 1.0, exact};
}

std::optional<Row> LinearView::rowOfRelation(ExpressionIndex e) {
    if (!isRelation(model_.operatorOf(e))) return std::nullopt;
    const Relation relation = relationOf(model_.operatorOf(e));
    const bool isEquation = relation.isEquation();
    if (relation.direction == 0 && !isEquation) return std::nullopt;
    const bool isExact = RangeOperands(model_, e, propagator_.ranges()).areExactIntegers();
    // Between doubles the solutions of a strict relation are not closed.
    if (relation.isStrict && !isExact) return std::nullopt;
    const auto sides = model_.operandsOf(e);
    const double step = relation.isStrict ? 1.0 : 0.0;
    const bool isUpper = isEquation || relation.direction < 0;
    const bool isLower = isEquation || relation.direction > 0;
    boundFrom((isUpper ? 1 : 0) - (isLower ? 1 : 0));
    std::optional<LinearForm> form = forms_.differenceOf(sides[0], sides[1]);
    if (!form) return std::nullopt;
    return Row{*std::move(form), isLower ? step : -infinity, isUpper ? -step : infinity,
               isExact ? exact : toleranceOfRelation(propagator_, sides[0], sides[1])};
}

/// Adds b or 1 - b to `sum`, unless it is there already.
/// @return true when its opposite is there: one of the two always holds.
bool LinearView::addLiteral(const LinearForm& literal, LinearForm& sum) {
    const auto known = std::find(sum.column.begin(), sum.column.end(), literal.column.front());
    if (known != sum.column.end()) {
        const auto k = static_cast<std::size_t>(known - sum.column.begin());
        return sum.coefficient[k] != literal.coefficient.front();
    }
    sum.column.push_back(literal.column.front());
    sum.coefficient.push_back(literal.coefficient.front());
    sum.constant += literal.constant;
    return false;
}

/// or(a, b, ...): a binary per alternative says which one holds.
bool LinearView::addAlternatives(ExpressionIndex e) {
    LinearForm atLeastOne;
    for (const ExpressionIndex x : model_.operandsOf(e)) {
        if (forms_.isConstant(x)) {
            if (values_[static_cast<std::size_t>(x)].isTrue()) return true;
            continue;
        }
        std::optional<Row> row = rowOf(x);
        if (!row) return false;
        if (forms_.isBinary(x) || model_.operatorOf(x) == LS_OP_NOT) {
            if (addLiteral(row->form, atLeastOne)) return true;
            continue;
        }
        const std::int32_t binary = forms_.makeColumn(0.0, 1.0, /*isInteger=*/true);
        if (!addIndicated(binary, *row)) return false;
        atLeastOne.column.push_back(binary);
        atLeastOne.coefficient.push_back(1.0);
    }
    forms_.addRow(atLeastOne, 1.0, infinity, exact);
    return true;
}

/// binary = 1 implies the row, by multipliers that the form's bounds justify.
bool LinearView::addIndicated(std::int32_t binary, const Row& row) {
    const Range activity = activityOf(row.form, out_);
    if (std::isfinite(row.upper) && activity.upper > row.upper) {
        const double bigM = activity.upper - row.upper;
        if (!(bigM <= largestBigM)) return false;
        LinearForm form = row.form;
        form.column.push_back(binary);
        form.coefficient.push_back(bigM);
        forms_.addRow(form, -infinity, row.upper + bigM, row.tolerance);
    }
    if (std::isfinite(row.lower) && activity.lower < row.lower) {
        const double bigM = row.lower - activity.lower;
        if (!(bigM <= largestBigM)) return false;
        LinearForm form = row.form;
        form.column.push_back(binary);
        form.coefficient.push_back(-bigM);
        forms_.addRow(form, row.lower - bigM, infinity, row.tolerance);
    }
    return true;
}

}  // namespace

/// The judge's tolerance is relative to the larger side; sides that it finds equal are about as
/// large as the smaller of their largest magnitudes.
double toleranceOfRelation(const Propagator& propagator, ExpressionIndex left,
                           ExpressionIndex right) {
    const auto magnitude = [&propagator](ExpressionIndex e) {
        const Range r = propagator.rangeOf(e);
        return std::max(std::fabs(r.lower), std::fabs(r.upper));
    };
    const double smaller = std::min(magnitude(left), magnitude(right));
    return relationTolerance * (1.0 + 4e-6) * std::max(1.0, smaller);
}

std::optional<LinearModel> linearViewOf(const ClosedModel& model, const Propagator& propagator,
                                        const std::vector<Value>& values) {
    std::optional<LinearModel> linear = LinearView(model, propagator, values, nullptr).run();
    if (linear) return linear;
    const auto curvature = curvaturesOf(model, propagator, values);
    return LinearView(model, propagator, values, &curvature).run();
}

}  // namespace engine
