#include "linear/linear_forms.hpp"

#include <algorithm>
#include <cmath>
#include <set>

#include "operators/operator_row.hpp"

namespace engine {
namespace {

/// Beyond this, a bound in a product row says less than the solver's integrality tolerance hides.
constexpr double largestProductBound = 1e6;
/// Tolerance of rows that no relation stands behind.
constexpr double exact = 0.0;

}  // namespace

LinearForms::LinearForms(const ClosedModel& model, const Propagator& propagator,
                         const std::vector<Value>& values, LinearModel& out)
    : model_(model),
      propagator_(propagator),
      values_(values),
      out_(out),
      depends_(model.op.size(), 0),
      columnOf_(model.decision.size(), -1),
      workLeft_(1'000'000 + 20 * static_cast<std::int64_t>(model.operand.size())) {
    for (const ExpressionIndex e : model.order) {
        const auto operands = model.operandsOf(e);
        depends_[static_cast<std::size_t>(e)] =
            model.decisionOf[static_cast<std::size_t>(e)] >= 0 ||
            std::any_of(operands.begin(), operands.end(), [this](ExpressionIndex x) {
                return depends_[static_cast<std::size_t>(x)] != 0;
            });
    }
}

bool LinearForms::isBinary(ExpressionIndex e) const {
    const DecisionIndex d = model_.decisionOf[static_cast<std::size_t>(e)];
    if (d < 0 || !model_.isDiscrete(d)) return false;
    const Interval domain = propagator_.domainOf(d);
    return domain.lower >= 0.0 && domain.upper <= 1.0;
}

std::int32_t LinearForms::makeColumn(double lower, double upper, bool isInteger) {
    out_.lower.push_back(lower);
    out_.upper.push_back(upper);
    out_.isInteger.push_back(isInteger ? 1 : 0);
    out_.decision.push_back(-1);
    total_.push_back(0.0);
    isTouched_.push_back(0);
    return static_cast<std::int32_t>(out_.nbColumns()) - 1;
}

std::int32_t LinearForms::columnOf(DecisionIndex d) {
    std::int32_t& column = columnOf_[static_cast<std::size_t>(d)];
    if (column < 0) {
        const Interval domain = propagator_.domainOf(d);
        column = makeColumn(domain.lower, domain.upper, model_.isDiscrete(d));
        out_.decision.back() = d;
    }
    return column;
}

void LinearForms::addRow(const LinearForm& form, double lower, double upper, double tolerance) {
    out_.column.insert(out_.column.end(), form.column.begin(), form.column.end());
    out_.coefficient.insert(out_.coefficient.end(), form.coefficient.begin(),
                            form.coefficient.end());
    out_.rowStart.push_back(static_cast<std::int32_t>(out_.column.size()));
    out_.rowLower.push_back(lower - form.constant);
    out_.rowUpper.push_back(upper - form.constant);
    out_.tolerance.push_back(tolerance);
}

void LinearForms::addColumn(std::int32_t column, double factor) {
    const auto j = static_cast<std::size_t>(column);
    if (isTouched_[j] == 0) {
        isTouched_[j] = 1;
        touched_.push_back(column);
    }
    total_[j] += factor;
}

LinearForm LinearForms::takeForm() {
    LinearForm form;
    form.constant = constant_;
    for (const std::int32_t column : touched_) {
        const auto j = static_cast<std::size_t>(column);
        if (total_[j] != 0.0) {
            form.column.push_back(column);
            form.coefficient.push_back(total_[j]);
        }
        total_[j] = 0.0;
        isTouched_[j] = 0;
    }
    touched_.clear();
    stack_.clear();
    constant_ = 0.0;
    return form;
}

std::optional<LinearForm> LinearForms::formOf(ExpressionIndex e, double factor,
                                              ExpressionIndex minus) {
    stack_.push_back({e, factor});
    if (minus != noExpression) stack_.push_back({minus, -factor});
    bool isLinear = true;
    while (isLinear && !stack_.empty()) {
        const Term term = stack_.back();
        stack_.pop_back();
        isLinear = workLeft_-- > 0 && std::isfinite(term.factor) && expand(term);
    }
    const bool isFinite = std::isfinite(constant_);
    LinearForm form = takeForm();
    if (!isLinear || !isFinite) return std::nullopt;
    return form;
}

bool LinearForms::expand(const Term& term) {
    const auto e = static_cast<std::size_t>(term.expression);
    if (isConstant(term.expression)) {
        constant_ += term.factor * numberOf(term.expression);
        return true;
    }
    if (model_.decisionOf[e] >= 0) {
        addColumn(columnOf(model_.decisionOf[e]), term.factor);
        return true;
    }
    // What curves the right way as a whole would lose that in its terms.
    if (side_ != 0 && (*curvature_)[e].isWhole) return addCurved(term);
    const Operands operands(model_, term.expression);
    return rowOf(model_.operatorOf(term.expression)).linear(operands, term.factor, *this) ||
           addCurved(term);
}

/// Columns for all decisions that `e` depends on.
void LinearForms::addColumnsBelow(ExpressionIndex e) {
    std::vector<ExpressionIndex> open{e};
    std::set<ExpressionIndex> seen;
    while (!open.empty()) {
        const ExpressionIndex x = open.back();
        open.pop_back();
        if (isConstant(x) || !seen.insert(x).second) continue;
        const DecisionIndex d = model_.decisionOf[static_cast<std::size_t>(x)];
        if (d >= 0) columnOf(d);
        const auto operands = model_.operandsOf(x);
        workLeft_ -= static_cast<std::int64_t>(operands.size());
        open.insert(open.end(), operands.begin(), operands.end());
    }
}

/// A column for an expression that curves the way in which its form is bounded.
bool LinearForms::addCurved(const Term& term) {
    if (side_ == 0) return false;
    const bool mustBeConvex = (term.factor > 0.0) == (side_ > 0);
    const Curvature wanted = mustBeConvex ? Curvature::Convex : Curvature::Concave;
    if ((*curvature_)[static_cast<std::size_t>(term.expression)].curvature != wanted) return false;
    const auto [known, isNew] = curvedColumn_.try_emplace(term.expression, -1);
    if (isNew) {
        const Range range = propagator_.rangeOf(term.expression);
        known->second = makeColumn(range.lower, range.upper, /*isInteger=*/false);
        out_.curved.push_back({known->second, term.expression, mustBeConvex});
        addColumnsBelow(term.expression);
    }
    addColumn(known->second, term.factor);
    return true;
}

bool LinearForms::addProduct(std::span<const ExpressionIndex> factors, double factor) {
    std::vector<ExpressionIndex> binaries;
    ExpressionIndex other = noExpression;
    for (const ExpressionIndex x : factors) {
        if (isConstant(x)) {
            factor *= numberOf(x);
        } else if (isBinary(x)) {
            binaries.push_back(x);
        } else if (other == noExpression) {
            other = x;
        } else {
            return false;
        }
    }
    if (factor == 0.0) return true;
    // The square of a binary is itself.
    std::sort(binaries.begin(), binaries.end());
    binaries.erase(std::unique(binaries.begin(), binaries.end()), binaries.end());
    if (binaries.empty() || (binaries.size() == 1 && other == noExpression)) {
        stack_.push_back({binaries.empty() ? other : binaries.front(), factor});
        return true;
    }
    const std::int32_t column = productColumn(binaries, other);
    if (column >= 0) addColumn(column, factor);
    return column >= 0;
}

/// A column that equals the product of binaries and maybe one bounded decision; -1 when there is
/// none.
std::int32_t LinearForms::productColumn(const std::vector<ExpressionIndex>& binaries,
                                        ExpressionIndex other) {
    std::vector<ExpressionIndex> key = binaries;
    Interval range{1.0, 1.0};
    std::int32_t otherColumn = -1;
    if (other != noExpression) {
        key.push_back(other);
        const DecisionIndex d = model_.decisionOf[static_cast<std::size_t>(other)];
        if (d < 0) return -1;
        range = propagator_.domainOf(d);
        if (std::max(std::fabs(range.lower), std::fabs(range.upper)) > largestProductBound) {
            return -1;
        }
        otherColumn = columnOf(d);
    }
    const auto known = productColumn_.find(key);
    if (known != productColumn_.end()) return known->second;
    workLeft_ -= static_cast<std::int64_t>(key.size()) * 4;
    std::vector<std::int32_t> columns;
    columns.reserve(binaries.size());
    for (const ExpressionIndex b : binaries) {
        columns.push_back(columnOf(model_.decisionOf[static_cast<std::size_t>(b)]));
    }
    const double lower = std::min(0.0, range.lower);
    const double upper = std::max(0.0, range.upper);
    const std::int32_t z = makeColumn(lower, upper, /*isInteger=*/false);
    addProductRows(z, columns, otherColumn, lower, /*isLowerBound=*/true);
    addProductRows(z, columns, otherColumn, upper, /*isLowerBound=*/false);
    productColumn_.emplace(std::move(key), z);
    return z;
}

/// One side of z = other * product of binaries (McCormick 1976; exact since they are integral).
/// Without `other` it is 1. For a lower bound of `other`, at most 0:
///   z - bound * b >= 0 for each binary b,    z - other + bound * sum(1 - b) <= 0;
/// for an upper bound, at least 0, the opposite signs.
void LinearForms::addProductRows(std::int32_t z, const std::vector<std::int32_t>& binaries,
                                 std::int32_t other, double bound, bool isLowerBound) {
    LinearForm near{{z}, {1.0}, other < 0 ? -1.0 : 0.0};
    if (other >= 0) {
        near.column.push_back(other);
        near.coefficient.push_back(-1.0);
    }
    for (const std::int32_t b : binaries) {
        LinearForm zero{{z}, {1.0}, 0.0};
        if (bound != 0.0) {
            zero.column.push_back(b);
            zero.coefficient.push_back(-bound);
            near.column.push_back(b);
            near.coefficient.push_back(-bound);
        }
        near.constant += bound;
        addRow(zero, isLowerBound ? 0.0 : -infinity, isLowerBound ? infinity : 0.0, exact);
    }
    addRow(near, isLowerBound ? -infinity : 0.0, isLowerBound ? 0.0 : infinity, exact);
}

}  // namespace engine
