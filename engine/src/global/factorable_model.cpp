#include "global/factorable_model.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

#include "global/cones.hpp"
#include "global/curved_forms.hpp"
#include "global/form_arithmetic.hpp"
#include "linear/linear_view.hpp"
#include "model/operator_table.hpp"
#include "operators/operands.hpp"
#include "operators/relation.hpp"

namespace engine {
namespace {

/// Beyond this a relaxation costs more than it tells.
constexpr std::size_t mostOperands = 300'000;
constexpr std::int64_t mostTerms = 2'000'000;
/// Longer sums that others use become columns, lest nested sums are written out again and again.
constexpr std::size_t longSum = 40;

class FactorableBuilder {
public:
    FactorableBuilder(const ClosedModel& model, const Propagator& propagator,
                      const std::vector<Value>& values)
        : model_(model),
          propagator_(propagator),
          values_(values),
          isNeeded_(model.op.size(), 0),
          depends_(model.op.size(), 0),
          form_(model.op.size()) {}

    std::optional<FactorableModel> run();

private:
    using Rule = LinearForm (FactorableBuilder::*)(ExpressionIndex);
    static constexpr std::array<Rule, nbOperators> rules();

    // What is needed.
    void findDependence();
    void findNeeded();
    void need(ExpressionIndex e) { isNeeded_[static_cast<std::size_t>(e)] = 1; }

    // Constraints and objective.
    void addConstraint(ExpressionIndex e);
    void addRelation(ExpressionIndex e);
    void addRow(const LinearForm& form, double lower, double upper, double tolerance);

    // Operators.
    LinearForm decision(ExpressionIndex e);
    LinearForm sum(ExpressionIndex e);
    LinearForm difference(ExpressionIndex e);
    LinearForm product(ExpressionIndex e);
    LinearForm quotient(ExpressionIndex e);
    LinearForm power(ExpressionIndex e);
    LinearForm largest(ExpressionIndex e);
    LinearForm smallest(ExpressionIndex e);
    LinearForm choice(ExpressionIndex e);
    LinearForm relation(ExpressionIndex e);
    LinearForm negation(ExpressionIndex e);
    LinearForm conjunction(ExpressionIndex e);
    LinearForm disjunction(ExpressionIndex e);
    LinearForm distance(ExpressionIndex e);
    LinearForm element(ExpressionIndex e);
    LinearForm scalarProduct(ExpressionIndex e);
    LinearForm array(ExpressionIndex) { return {}; }
    LinearForm unknown(ExpressionIndex) { return columnForm(makeColumn()); }
    template <int Below, int Above>
    LinearForm rounded(ExpressionIndex e);
    template <Curve::Kind Kind>
    LinearForm curve(ExpressionIndex e) {
        return curveOf({Kind}, termOf(first(e)));
    }
    LinearForm root(ExpressionIndex e) { return powerOf(termOf(first(e)), 0.5); }

    // Parts.
    LinearForm powerOf(const LinearForm& base, double exponent);
    LinearForm curveOf(Curve curve, const LinearForm& argument);
    LinearForm productOf(const LinearForm& a, const LinearForm& b);
    LinearForm extreme(ExpressionIndex e, double sign);
    LinearForm junction(ExpressionIndex e, double sign);
    LinearForm truthOf(ExpressionIndex e);
    /// `e` as at most one column with a factor.
    LinearForm termOf(ExpressionIndex e);
    std::int32_t makeColumn(double lower, double upper, bool isInteger);
    std::int32_t makeColumn() { return makeColumn(-infinity, infinity, /*isInteger=*/false); }
    std::int32_t columnOf(const LinearForm& form);
    static bool isTerm(const LinearForm& form) {
        return form.column.empty() || (form.column.size() == 1 && form.constant == 0.0);
    }
    void define(Definition definition);
    void claim(const LinearForm& form, ExpressionIndex e);

    [[nodiscard]] std::span<const ExpressionIndex> operands(ExpressionIndex e) const {
        return model_.operandsOf(e);
    }
    [[nodiscard]] ExpressionIndex first(ExpressionIndex e) const { return operands(e)[0]; }
    [[nodiscard]] const LinearForm& formOf(ExpressionIndex e) const {
        return form_[static_cast<std::size_t>(e)];
    }
    [[nodiscard]] bool isConstant(ExpressionIndex e) const {
        return depends_[static_cast<std::size_t>(e)] == 0;
    }
    [[nodiscard]] double constant(ExpressionIndex e) const {
        return values_[static_cast<std::size_t>(e)].asDouble();
    }
    [[nodiscard]] bool isBinary(std::int32_t column) const {
        const auto j = static_cast<std::size_t>(column);
        const LinearModel& m = out_.linear;
        return m.isInteger[j] != 0 && m.lower[j] >= 0.0 && m.upper[j] <= 1.0;
    }
    /// Of a relation: between integers that doubles hold.
    [[nodiscard]] bool isExact(ExpressionIndex relation) const {
        return RangeOperands(model_, relation, propagator_.ranges()).areExactIntegers();
    }
    [[nodiscard]] double toleranceOf(ExpressionIndex relation) const {
        const auto sides = operands(relation);
        return isExact(relation) ? 0.0 : toleranceOfRelation(propagator_, sides[0], sides[1]);
    }

    const ClosedModel& model_;
    const Propagator& propagator_;
    const std::vector<Value>& values_;
    FactorableModel out_;
    std::vector<std::uint8_t> isNeeded_;            ///< [nbExpressions] as a number
    std::vector<std::uint8_t> depends_;             ///< [nbExpressions] on a decision
    std::vector<LinearForm> form_;                  ///< [nbExpressions] of those needed
    std::map<LinearForm, std::int32_t> sumColumn_;  ///< equal sums share one
    std::map<std::pair<Curve, std::int32_t>, std::int32_t> curveColumn_;
    std::map<std::pair<std::int32_t, std::int32_t>, std::int32_t> productColumn_;
    FormSum scratch_;
    std::int64_t nbTerms_ = 0;
    ExpressionIndex current_ = noExpression;  ///< whose rule is at work
};

/// One rule an operator.
constexpr std::array<FactorableBuilder::Rule, nbOperators> FactorableBuilder::rules() {
    using B = FactorableBuilder;
    using Kind = Curve::Kind;
    std::array<Rule, nbOperators> rule{};
    for (Rule& r : rule) r = &B::unknown;
    rule[LS_OP_BOOL] = rule[LS_OP_INT] = rule[LS_OP_FLOAT] = &B::decision;
    rule[LS_OP_SUM] = &B::sum;
    rule[LS_OP_SUB] = &B::difference;
    rule[LS_OP_PROD] = &B::product;
    rule[LS_OP_DIV] = &B::quotient;
    rule[LS_OP_POW] = &B::power;
    rule[LS_OP_MAX] = &B::largest;
    rule[LS_OP_MIN] = &B::smallest;
    rule[LS_OP_IF] = &B::choice;
    rule[LS_OP_EQ] = rule[LS_OP_NEQ] = rule[LS_OP_GEQ] = &B::relation;
    rule[LS_OP_LEQ] = rule[LS_OP_GT] = rule[LS_OP_LT] = &B::relation;
    rule[LS_OP_NOT] = &B::negation;
    rule[LS_OP_AND] = &B::conjunction;
    rule[LS_OP_OR] = &B::disjunction;
    rule[LS_OP_DIST] = &B::distance;
    rule[LS_OP_AT] = &B::element;
    rule[LS_OP_ARRAY] = &B::array;
    rule[LS_OP_SCALARPROD] = &B::scalarProduct;
    rule[LS_OP_CEIL] = &B::rounded<0, 2>;
    rule[LS_OP_FLOOR] = &B::rounded<2, 0>;
    rule[LS_OP_ROUND] = &B::rounded<1, 1>;
    rule[LS_OP_ABS] = &B::curve<Kind::Abs>;
    rule[LS_OP_SQRT] = &B::root;
    rule[LS_OP_LOG] = &B::curve<Kind::Log>;
    rule[LS_OP_EXP] = &B::curve<Kind::Exp>;
    rule[LS_OP_COS] = &B::curve<Kind::Cos>;
    rule[LS_OP_SIN] = &B::curve<Kind::Sin>;
    rule[LS_OP_TAN] = &B::curve<Kind::Tan>;
    return rule;
}

void FactorableBuilder::findDependence() {
    for (const ExpressionIndex e : model_.order) {
        const auto x = operands(e);
        depends_[static_cast<std::size_t>(e)] =
            model_.decisionOf[static_cast<std::size_t>(e)] >= 0 ||
            std::any_of(x.begin(), x.end(), [this](ExpressionIndex o) { return !isConstant(o); });
    }
}

/// Top relations become rows: their sides are needed, they are not.
void FactorableBuilder::findNeeded() {
    std::vector<ExpressionIndex> open = model_.constraint;
    while (!open.empty()) {
        const ExpressionIndex e = open.back();
        open.pop_back();
        const ls_operator op = model_.operatorOf(e);
        if (op == LS_OP_AND) {
            open.insert(open.end(), operands(e).begin(), operands(e).end());
        } else if (isRelation(op)) {
            for (const ExpressionIndex side : operands(e)) need(side);
        } else {
            need(e);
        }
    }
    if (!model_.objective.empty()) need(model_.objective.front().expression);
    for (auto e = model_.order.rbegin(); e != model_.order.rend(); ++e) {
        const bool isArray = model_.operatorOf(*e) == LS_OP_ARRAY;
        if (isNeeded_[static_cast<std::size_t>(*e)] == 0 || (isConstant(*e) && !isArray)) continue;
        for (const ExpressionIndex x : operands(*e)) need(x);
    }
}

bool isFinite(const LinearForm& form) {
    return std::isfinite(form.constant) &&
           std::all_of(form.coefficient.begin(), form.coefficient.end(),
                       [](double c) { return std::isfinite(c); });
}

std::optional<FactorableModel> FactorableBuilder::run() {
    if (model_.operand.size() > mostOperands) return std::nullopt;
    static constexpr std::array<Rule, nbOperators> rule = rules();
    findDependence();
    findNeeded();
    for (const ExpressionIndex e : model_.order) {
        const auto i = static_cast<std::size_t>(e);
        if (isNeeded_[i] == 0) continue;
        current_ = e;
        form_[i] = isConstant(e) ? constantForm(constant(e)) : (this->*rule[model_.op[i]])(e);
        // Without a value, such as log(-1), it is known as a range only.
        if (!isFinite(form_[i])) form_[i] = unknown(e);
        claim(form_[i], e);
        nbTerms_ += static_cast<std::int64_t>(form_[i].column.size());
        if (nbTerms_ > mostTerms) return std::nullopt;
        if (form_[i].column.size() > longSum && model_.usersOf(e).size() > 1) termOf(e);
    }
    if (!model_.objective.empty()) {
        const Objective& o = model_.objective.front();
        out_.linear.objective.push_back({formOf(o.expression), o.maximise});
    }
    for (const ExpressionIndex e : model_.constraint) addConstraint(e);
    out_.curved = curvedFormsOf(model_, propagator_, values_, out_, form_, isNeeded_);
    takeConesOut(out_);
    return std::move(out_);
}

void FactorableBuilder::addConstraint(ExpressionIndex top) {
    std::vector<ExpressionIndex> open{top};
    while (!open.empty()) {
        const ExpressionIndex e = open.back();
        open.pop_back();
        const ls_operator op = model_.operatorOf(e);
        if (op == LS_OP_AND) {
            open.insert(open.end(), operands(e).rbegin(), operands(e).rend());
        } else if (isRelation(op)) {
            addRelation(e);
        } else if (isConstant(e)) {
            if (constant(e) == 0.0) addRow({}, 1.0, infinity, 0.0);
        } else {
            const LinearForm truth = truthOf(e);
            out_.isComplete = out_.isComplete && !truth.column.empty();
            addRow(truth, 1.0, infinity, 0.0);
        }
    }
}

void FactorableBuilder::addRelation(ExpressionIndex e) {
    const auto sides = operands(e);
    const ls_operator op = model_.operatorOf(e);
    if (op == LS_OP_NEQ) {
        out_.isComplete = false;
        return;
    }
    const bool hasStep = isExact(e);
    const double step = hasStep && (op == LS_OP_GT || op == LS_OP_LT) ? 1.0 : 0.0;
    const bool isUpper = op == LS_OP_LEQ || op == LS_OP_LT || op == LS_OP_EQ;
    const bool isLower = op == LS_OP_GEQ || op == LS_OP_GT || op == LS_OP_EQ;
    addRow(difference(e), isLower ? step : -infinity, isUpper ? -step : infinity, toleranceOf(e));
}

void FactorableBuilder::addRow(const LinearForm& form, double lower, double upper,
                               double tolerance) {
    if (!std::isfinite(form.constant)) return;
    LinearModel& m = out_.linear;
    m.column.insert(m.column.end(), form.column.begin(), form.column.end());
    m.coefficient.insert(m.coefficient.end(), form.coefficient.begin(), form.coefficient.end());
    m.rowStart.push_back(static_cast<std::int32_t>(m.column.size()));
    m.rowLower.push_back(lower - form.constant);
    m.rowUpper.push_back(upper - form.constant);
    m.tolerance.push_back(tolerance);
}

std::int32_t FactorableBuilder::makeColumn(double lower, double upper, bool isInteger) {
    LinearModel& m = out_.linear;
    m.lower.push_back(lower);
    m.upper.push_back(upper);
    m.isInteger.push_back(isInteger ? 1 : 0);
    m.decision.push_back(-1);
    out_.origin.emplace_back();
    return static_cast<std::int32_t>(m.nbColumns()) - 1;
}

/// Where `e` is a factor times a column, plus a constant, the column takes its origin from it.
void FactorableBuilder::claim(const LinearForm& form, ExpressionIndex e) {
    if (form.column.size() != 1) return;
    ColumnOrigin& origin = out_.origin[static_cast<std::size_t>(form.column.front())];
    const double scale = 1.0 / form.coefficient.front();
    if (origin.expression != noExpression || !std::isfinite(scale)) return;
    origin.expression = e;
    origin.scale = scale;
    origin.offset = -form.constant * scale;
}

void FactorableBuilder::define(Definition definition) {
    out_.origin[static_cast<std::size_t>(definition.result)].definition =
        static_cast<std::int32_t>(out_.definition.size());
    out_.definition.push_back(std::move(definition));
}

LinearForm FactorableBuilder::decision(ExpressionIndex e) {
    const DecisionIndex d = model_.decisionOf[static_cast<std::size_t>(e)];
    const Interval domain = propagator_.domainOf(d);
    const std::int32_t column = makeColumn(domain.lower, domain.upper, model_.isDiscrete(d));
    out_.linear.decision[static_cast<std::size_t>(column)] = d;
    return columnForm(column);
}

LinearForm FactorableBuilder::sum(ExpressionIndex e) {
    for (const ExpressionIndex x : operands(e)) scratch_.add(formOf(x), 1.0);
    return scratch_.take();
}

LinearForm FactorableBuilder::difference(ExpressionIndex e) {
    return sumOf(formOf(operands(e)[0]), formOf(operands(e)[1]), -1.0);
}

std::int32_t FactorableBuilder::columnOf(const LinearForm& form) {
    if (isTerm(form) && form.coefficient.front() == 1.0) return form.column.front();
    const auto [known, isNew] = sumColumn_.try_emplace(form, noColumn);
    if (!isNew) return known->second;
    const std::int32_t column = known->second = makeColumn();
    scratch_.add(form, 1.0);
    scratch_.add(columnForm(column), -1.0);
    addRow(scratch_.take(), 0.0, 0.0, 0.0);
    define({.kind = Definition::Kind::Sum, .result = column, .forms = {form}, .guard = current_});
    return column;
}

LinearForm FactorableBuilder::termOf(ExpressionIndex e) {
    LinearForm& form = form_[static_cast<std::size_t>(e)];
    if (!isTerm(form)) {
        form = columnForm(columnOf(form));
        claim(form, e);
    }
    return form;
}

/// Equal operands are a power.
LinearForm FactorableBuilder::product(ExpressionIndex e) {
    std::map<ExpressionIndex, int> multiplicity;
    std::vector<ExpressionIndex> distinct;
    LinearForm result = constantForm(1.0);
    for (const ExpressionIndex x : operands(e)) {
        if (formOf(x).column.empty()) {
            result.constant *= formOf(x).constant;
        } else if (++multiplicity[x] == 1) {
            distinct.push_back(x);
        }
    }
    // Multiplied by a constant a sum stays what it is.
    if (distinct.size() == 1 && multiplicity[distinct.front()] == 1) {
        return scaled(formOf(distinct.front()), result.constant);
    }
    for (const ExpressionIndex x : distinct) {
        result = productOf(result, powerOf(termOf(x), multiplicity[x]));
    }
    return result;
}

/// Of two terms.
LinearForm FactorableBuilder::productOf(const LinearForm& a, const LinearForm& b) {
    if (a.column.empty()) return scaled(b, a.constant);
    if (b.column.empty()) return scaled(a, b.constant);
    const std::int32_t first = a.column.front();
    const std::int32_t second = b.column.front();
    const double factor = a.coefficient.front() * b.coefficient.front();
    if (first == second) return scaled(powerOf(columnForm(first), 2.0), factor);
    const std::pair<std::int32_t, std::int32_t> key = std::minmax(first, second);
    const auto [known, isNew] = productColumn_.try_emplace(key, noColumn);
    if (isNew) {
        known->second = makeColumn();
        define({.kind = Definition::Kind::Product,
                .result = known->second,
                .first = first,
                .second = second,
                .forms = {},
                .guard = current_});
    }
    return scaled(columnForm(known->second), factor);
}

/// Of a term.
LinearForm FactorableBuilder::powerOf(const LinearForm& base, double exponent) {
    if (exponent == 0.0) return constantForm(1.0);
    if (exponent == 1.0) return base;
    const Curve curve{Curve::Kind::Power, exponent};
    if (base.column.empty()) return curveOf(curve, base);
    const double factor = base.coefficient.front();
    // Zero and one are their own powers.
    if (exponent > 0.0 && factor == 1.0 && isBinary(base.column.front())) return base;
    const bool isSplit = exponent == std::rint(exponent) || factor > 0.0;
    const double scale = isSplit ? std::pow(factor, exponent) : 0.0;
    if (!std::isfinite(scale) || scale == 0.0) return curveOf(curve, base);
    return scaled(curveOf(curve, columnForm(base.column.front())), scale);
}

/// Of a term.
LinearForm FactorableBuilder::curveOf(Curve curve, const LinearForm& argument) {
    if (argument.column.empty()) return constantForm(curve.value(argument.constant));
    const std::int32_t column = columnOf(argument);
    const auto [known, isNew] = curveColumn_.try_emplace({curve, column}, noColumn);
    if (isNew) {
        known->second = makeColumn();
        define({.kind = Definition::Kind::Curve,
                .result = known->second,
                .first = column,
                .curve = curve,
                .forms = {},
                .guard = current_});
    }
    return columnForm(known->second);
}

/// a / b is the column q for which q * b = a.
LinearForm FactorableBuilder::quotient(ExpressionIndex e) {
    const ExpressionIndex divisor = operands(e)[1];
    const LinearForm& a = formOf(first(e));
    if (isConstant(divisor)) return scaled(a, 1.0 / constant(divisor));
    if (a.column.empty()) return scaled(powerOf(termOf(divisor), -1.0), a.constant);
    const std::int32_t q = makeColumn();
    scratch_.add(productOf(columnForm(q), termOf(divisor)), 1.0);
    scratch_.add(a, -1.0);
    addRow(scratch_.take(), 0.0, 0.0, 0.0);
    return columnForm(q);
}

LinearForm FactorableBuilder::power(ExpressionIndex e) {
    const ExpressionIndex base = operands(e)[0];
    const ExpressionIndex exponent = operands(e)[1];
    if (isConstant(exponent)) return powerOf(termOf(base), constant(exponent));
    if (isConstant(base)) {
        if (!(constant(base) > 0.0)) return unknown(e);
        return curveOf({Curve::Kind::Exp}, scaled(termOf(exponent), std::log(constant(base))));
    }
    if (!(propagator_.rangeOf(base).lower > 0.0)) return unknown(e);
    const LinearForm log = curveOf({Curve::Kind::Log}, termOf(base));
    return curveOf({Curve::Kind::Exp}, productOf(termOf(exponent), log));
}

LinearForm FactorableBuilder::largest(ExpressionIndex e) {
    return extreme(e, 1.0);
}

LinearForm FactorableBuilder::smallest(ExpressionIndex e) {
    return extreme(e, -1.0);
}

/// min x = -max -x.
LinearForm FactorableBuilder::extreme(ExpressionIndex e, double sign) {
    Definition definition{
        .kind = Definition::Kind::Largest, .result = makeColumn(), .forms = {}, .guard = current_};
    for (const ExpressionIndex x : operands(e)) {
        definition.forms.push_back(scaled(formOf(x), sign));
        scratch_.add(definition.forms.back(), 1.0);
        scratch_.add(columnForm(definition.result), -1.0);
        addRow(scratch_.take(), -infinity, 0.0, 0.0);
    }
    const std::int32_t column = definition.result;
    define(std::move(definition));
    return scaled(columnForm(column), sign);
}

LinearForm FactorableBuilder::choice(ExpressionIndex e) {
    const auto x = operands(e);
    const LinearForm truth = truthOf(x[0]);
    if (truth.column.empty()) return truth.constant != 0.0 ? formOf(x[1]) : formOf(x[2]);
    const std::int32_t condition = columnOf(truth);
    const std::int32_t column = makeColumn();
    define({.kind = Definition::Kind::Choice,
            .result = column,
            .first = condition,
            .forms = {formOf(x[1]), formOf(x[2])},
            .guard = current_});
    return columnForm(column);
}

/// A column that is 1 where the relation holds; the others by their negations.
LinearForm FactorableBuilder::relation(ExpressionIndex e) {
    const ls_operator op = model_.operatorOf(e);
    const auto sides = operands(e);
    const bool isFlipped = op == LS_OP_GEQ || op == LS_OP_LT;
    const bool isNegated = op == LS_OP_GT || op == LS_OP_LT || op == LS_OP_NEQ;
    const bool isEquality = op == LS_OP_EQ || op == LS_OP_NEQ;
    scratch_.add(formOf(sides[0]), isFlipped ? -1.0 : 1.0);
    scratch_.add(formOf(sides[1]), isFlipped ? 1.0 : -1.0);
    const LinearForm form = scratch_.take();
    const std::int32_t column = makeColumn(0.0, 1.0, /*isInteger=*/true);
    const bool hasStep = isExact(e);
    define({.kind = isEquality ? Definition::Kind::IsZero : Definition::Kind::AtMost,
            .result = column,
            .forms = {form},
            .slack = toleranceOf(e),
            .step = hasStep ? 1.0 : 0.0,
            .guard = current_});
    return isNegated ? notOf(columnForm(column)) : columnForm(column);
}

/// The form of "`e` is nonzero": `e` itself where it is 0 or 1 anyway.
LinearForm FactorableBuilder::truthOf(ExpressionIndex e) {
    if (isConstant(e)) return constantForm(constant(e) != 0.0 ? 1.0 : 0.0);
    const Range r = propagator_.rangeOf(e);
    const bool isInteger = model_.isDouble[static_cast<std::size_t>(e)] == 0;
    if (isInteger && !r.mayBeNan && r.lower >= 0.0 && r.upper <= 1.0) return formOf(e);
    const std::int32_t isZero = makeColumn(0.0, 1.0, /*isInteger=*/true);
    define({.kind = Definition::Kind::IsZero, .result = isZero, .forms = {formOf(e)}, .guard = e});
    return notOf(columnForm(isZero));
}

LinearForm FactorableBuilder::negation(ExpressionIndex e) {
    return notOf(truthOf(first(e)));
}

LinearForm FactorableBuilder::conjunction(ExpressionIndex e) {
    return junction(e, 1.0);
}

LinearForm FactorableBuilder::disjunction(ExpressionIndex e) {
    return junction(e, -1.0);
}

/// and: t <= each operand, t >= their sum - (n - 1); or: the same with the senses turned.
LinearForm FactorableBuilder::junction(ExpressionIndex e, double sign) {
    const std::int32_t t = makeColumn(0.0, 1.0, /*isInteger=*/false);
    LinearForm all = scaled(columnForm(t), -sign);
    double nb = 0.0;
    for (const ExpressionIndex x : operands(e)) {
        const LinearForm truth = truthOf(x);
        scratch_.add(columnForm(t), sign);
        scratch_.add(truth, -sign);
        addRow(scratch_.take(), -infinity, 0.0, 0.0);
        scratch_.add(all, 1.0);
        scratch_.add(truth, sign);
        all = scratch_.take();
        nb += 1.0;
    }
    addRow(all, -infinity, sign > 0.0 ? nb - 1.0 : 0.0, 0.0);
    return columnForm(t);
}

LinearForm FactorableBuilder::distance(ExpressionIndex e) {
    LinearForm form = difference(e);
    if (!isTerm(form)) form = columnForm(columnOf(form));
    return curveOf({Curve::Kind::Abs}, form);
}

LinearForm FactorableBuilder::element(ExpressionIndex e) {
    const auto elements = operands(first(e));
    const ExpressionIndex index = operands(e)[1];
    if (!isConstant(index)) return unknown(e);
    const double position = std::trunc(constant(index));
    if (!(position >= 0.0 && position < static_cast<double>(elements.size()))) return unknown(e);
    return formOf(elements[static_cast<std::size_t>(position)]);
}

LinearForm FactorableBuilder::scalarProduct(ExpressionIndex e) {
    const auto a = operands(operands(e)[0]);
    const auto b = operands(operands(e)[1]);
    if (a.size() != b.size()) return unknown(e);
    FormSum total;
    for (std::size_t k = 0; k < a.size(); ++k) {
        total.add(productOf(termOf(a[k]), termOf(b[k])), 1.0);
    }
    return total.take();
}

/// Between `Below` halves under the operand and `Above` halves over it.
template <int Below, int Above>
LinearForm FactorableBuilder::rounded(ExpressionIndex e) {
    const std::int32_t column = makeColumn();
    scratch_.add(columnForm(column), 1.0);
    scratch_.add(formOf(first(e)), -1.0);
    addRow(scratch_.take(), -0.5 * Below, 0.5 * Above, 0.0);
    return columnForm(column);
}

}  // namespace

std::optional<FactorableModel> factorableModelOf(const ClosedModel& model,
                                                 const Propagator& propagator,
                                                 const std::vector<Value>& values) {
    return FactorableBuilder(model, propagator, values).run();
}

}  // namespace engine
