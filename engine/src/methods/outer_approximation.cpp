#include "methods/outer_approximation.hpp"

#include <algorithm>
#include <cmath>
#include <utility>

#include "back_ends/exact_back_end.hpp"
#include "evaluate/jacobian.hpp"
#include "methods/infeasibility_proof.hpp"
#include "model/domain.hpp"
#include "model/tolerances.hpp"

namespace engine {
namespace {

using Status = ExactAnswer::Status;

/// What a curved column may miss, absolute and relative to the expression, before a tangent is
/// added: well inside the relations' tolerance.
constexpr double fineGap = 1e-8;
constexpr int mostTangentRounds = 100;
constexpr int mostMasters = 200;
/// Tangents are loosened by this against the rounding of their coefficients.
constexpr double rounding = 1e-10;
/// Ways from a point where no tangent can be taken to one where it can.
constexpr double partsOfWay[] = {0.0, 1e-6, 1e-3, 0.1, 0.5, 1.0};

class OuterApproximation {
public:
    OuterApproximation(const Ground& ground, Findings& findings, std::string_view finder,
                       Pace& pace, LinearModel linear);

    [[nodiscard]] Conclusion run();

private:
    enum class Tangents { None, Added, Missing };

    void setObjective();
    [[nodiscard]] ExactProblem problemOver(const LinearModel& model) const;
    ExactAnswer solve(const ExactProblem& problem);
    ExactAnswer solveContinuous(const ExactProblem* fixed);
    Tangents addTangents(const std::vector<double>& levels);
    bool addTangent(std::size_t k, const std::vector<double>& levels, const Point& at);
    void evaluate(const Point& at);
    /// Can a tangent for curved column `k` be taken where was evaluated last?
    [[nodiscard]] bool isTangible(std::size_t k) const {
        const auto e = static_cast<std::size_t>(linear_.curved[k].expression);
        return isInside_[e] != 0 && jacobian_.isComplete(k);
    }
    [[nodiscard]] Point findReference();
    [[nodiscard]] Point pointOf(const std::vector<double>& levels) const;
    void offer(const std::vector<double>& levels);
    bool openWithTangents();
    bool improveByMaster();
    [[nodiscard]] ExactProblem withIntegersFixed(const std::vector<double>& levels) const;
    bool closes(const ExactAnswer& answer);
    void proveInconsistency();
    void addRow(const LinearForm& form, double upper);
    [[nodiscard]] bool mustStop() const { return pace_.mustEnd(); }

    const ClosedModel& model_;
    const Propagator& propagator_;
    Findings& findings_;
    FeasibleIncumbent& incumbent_;
    std::string_view finder_;
    Pace& pace_;
    int seed_;
    LinearModel linear_;
    LinearModel continuous_;  ///< the same without integrality
    std::vector<double> cost_;
    double sign_ = 1.0;
    double constant_ = 0.0;  ///< of the objective
    bool hasIntegers_;
    Point start_;
    Point reference_;                     ///< where most tangents can be taken
    Jacobian jacobian_;                   ///< a row for each curved column
    std::vector<std::int32_t> columnOf_;  ///< [nbDecisions]
    std::vector<Value> values_;
    std::vector<unsigned char> isInside_;  ///< [nbExpressions] it and its operands, their ranges
    const SparseRows* rows_ = nullptr;
    Conclusion result_;
};

OuterApproximation::OuterApproximation(const Ground& ground, Findings& findings,
                                       std::string_view finder, Pace& pace, LinearModel linear)
    : model_(ground.model),
      propagator_(ground.propagator),
      findings_(findings),
      incumbent_(findings.incumbent),
      finder_(finder),
      pace_(pace),
      seed_(ground.seed),
      linear_(std::move(linear)),
      hasIntegers_(std::find(linear_.isInteger.begin(), linear_.isInteger.end(), 1) !=
                   linear_.isInteger.end()),
      start_(ground.start),
      jacobian_(model_),
      columnOf_(model_.decision.size(), -1),
      isInside_(model_.op.size(), 0) {
    for (std::size_t j = 0; j < linear_.nbColumns(); ++j) {
        const DecisionIndex d = linear_.decision[j];
        if (d >= 0) columnOf_[static_cast<std::size_t>(d)] = static_cast<std::int32_t>(j);
    }
    for (const CurvedColumn& c : linear_.curved) jacobian_.addRow(c.expression, -1, 1.0);
    setObjective();
    continuous_ = linear_;
    std::fill(continuous_.isInteger.begin(), continuous_.isInteger.end(), 0);
}

void OuterApproximation::setObjective() {
    cost_.assign(linear_.nbColumns(), 0.0);
    if (linear_.objective.empty()) return;
    const LinearObjective& objective = linear_.objective.front();
    sign_ = objective.maximise ? -1.0 : 1.0;
    constant_ = objective.form.constant;
    for (std::size_t k = 0; k < objective.form.column.size(); ++k) {
        cost_[static_cast<std::size_t>(objective.form.column[k])] =
            sign_ * objective.form.coefficient[k];
    }
}

ExactProblem OuterApproximation::problemOver(const LinearModel& model) const {
    return {model, cost_, model.lower, model.upper, model.rowLower, model.rowUpper};
}

ExactAnswer OuterApproximation::solve(const ExactProblem& problem) {
    return solveExactly(problem, {pace_, seed_, polishTolerance});
}

/// Kelley's method. @param fixed  bounds to take, or none: the columns' own.
/// @return the last answer; Optimal only when no tangent was missing at its levels.
ExactAnswer OuterApproximation::solveContinuous(const ExactProblem* fixed) {
    ExactAnswer answer;
    for (int round = 0; round < mostTangentRounds && !mustStop(); ++round) {
        ExactProblem problem = problemOver(continuous_);
        if (fixed != nullptr) {
            problem.lower = fixed->lower;
            problem.upper = fixed->upper;
        }
        answer = solve(problem);
        if (answer.status != Status::Optimal) return answer;
        const Tangents tangents = addTangents(answer.levels);
        if (tangents == Tangents::None) return answer;
        if (tangents == Tangents::Missing) break;
    }
    answer.status = Status::Open;
    return answer;
}

Point OuterApproximation::pointOf(const std::vector<double>& levels) const {
    Point point = start_;
    for (std::size_t d = 0; d < point.size(); ++d) {
        if (columnOf_[d] < 0) continue;
        const auto j = static_cast<std::size_t>(columnOf_[d]);
        point[d] = Value::ofDouble(std::clamp(levels[j], linear_.lower[j], linear_.upper[j]));
    }
    return point;
}

/// Values, derivatives, and what lies inside its range.
void OuterApproximation::evaluate(const Point& at) {
    judge(model_, at, values_);
    rows_ = &jacobian_.compute(values_, columnOf_);
    for (const ExpressionIndex e : model_.order) {
        const auto i = static_cast<std::size_t>(e);
        const auto operands = model_.operandsOf(e);
        const bool areOperandsInside = std::all_of(
            operands.begin(), operands.end(),
            [this](ExpressionIndex x) { return isInside_[static_cast<std::size_t>(x)] != 0; });
        const double value = values_[i].asDouble();
        isInside_[i] =
            areOperandsInside && std::isfinite(value) && propagator_.rangeOf(e).contains(value) ? 1
                                                                                                : 0;
    }
}

/// The start, or the middle of its surroundings, whichever lets more tangents be taken.
Point OuterApproximation::findReference() {
    constexpr double surroundings = 10.0;
    Point middle = start_;
    for (std::size_t d = 0; d < middle.size(); ++d) {
        const double x = start_[d].asDouble();
        const Interval domain = propagator_.domainOf(static_cast<DecisionIndex>(d));
        middle[d] = Value::ofDouble(0.5 * (std::fmax(domain.lower, x - surroundings) +
                                           std::fmin(domain.upper, x + surroundings)));
    }
    const auto nbTangible = [this](const Point& at) {
        evaluate(at);
        std::size_t nb = 0;
        for (std::size_t k = 0; k < linear_.curved.size(); ++k) nb += isTangible(k) ? 1 : 0;
        return nb;
    };
    return nbTangible(middle) > nbTangible(start_) ? middle : start_;
}

/// Tangents for the columns that miss their expressions at `levels`, taken there or, where that
/// cannot be, on the way to the reference.
OuterApproximation::Tangents OuterApproximation::addTangents(const std::vector<double>& levels) {
    std::vector<std::size_t> open;
    for (std::size_t k = 0; k < linear_.curved.size(); ++k) open.push_back(k);
    const Point from = pointOf(levels);
    Tangents outcome = Tangents::None;
    for (const double part : partsOfWay) {
        Point at = from;
        for (std::size_t d = 0; d < at.size() && part > 0.0; ++d) {
            const double x = at[d].asDouble();
            at[d] = Value::ofDouble(x + part * (reference_[d].asDouble() - x));
        }
        evaluate(at);
        std::vector<std::size_t> left;
        for (const std::size_t k : open) {
            const bool isAdded = isTangible(k) && addTangent(k, levels, at);
            if (isAdded) outcome = Tangents::Added;
            // A tangent taken elsewhere that `levels` keep to does not tell whether they miss.
            const bool isSettled = isAdded || (isTangible(k) && part <= 0.0);
            if (!isSettled) left.push_back(k);
        }
        open = std::move(left);
        if (open.empty()) return outcome;
    }
    return outcome == Tangents::Added ? outcome : Tangents::Missing;
}

/// column >= value + derivatives * (x - at), or <= for a concave expression.
/// @return whether `levels` are beyond it; it is added then.
bool OuterApproximation::addTangent(std::size_t k, const std::vector<double>& levels,
                                    const Point& at) {
    const CurvedColumn& curved = linear_.curved[k];
    const double sign = curved.isConvex ? 1.0 : -1.0;
    const double value = values_[static_cast<std::size_t>(curved.expression)].asDouble();
    const double level = levels[static_cast<std::size_t>(curved.column)];
    LinearForm form{{curved.column}, {-sign}, sign * value};
    double size = std::fabs(value);
    double excess = sign * (value - level);
    for (std::size_t n = rows_->start[k]; n < rows_->start[k + 1]; ++n) {
        const std::int32_t j = rows_->column[n];
        const double x =
            at[static_cast<std::size_t>(linear_.decision[static_cast<std::size_t>(j)])].asDouble();
        const double derivative = sign * rows_->coefficient[n];
        form.column.push_back(j);
        form.coefficient.push_back(derivative);
        form.constant -= derivative * x;
        size += std::fabs(derivative * x);
        excess += derivative * (levels[static_cast<std::size_t>(j)] - x);
    }
    if (!(excess > fineGap * std::fmax(1.0, std::fabs(value)))) return false;
    addRow(form, rounding * std::fmax(1.0, size));
    return true;
}

/// form <= upper, in both models.
void OuterApproximation::addRow(const LinearForm& form, double upper) {
    for (LinearModel* model : {&linear_, &continuous_}) {
        model->column.insert(model->column.end(), form.column.begin(), form.column.end());
        model->coefficient.insert(model->coefficient.end(), form.coefficient.begin(),
                                  form.coefficient.end());
        model->rowStart.push_back(static_cast<std::int32_t>(model->column.size()));
        model->rowLower.push_back(-infinity);
        model->rowUpper.push_back(upper - form.constant);
        model->tolerance.push_back(0.0);
    }
}

void OuterApproximation::offer(const std::vector<double>& levels) {
    if (levels.empty()) return;
    Point point = pointOf(levels);
    for (DecisionIndex d = 0; d < model_.nbDecisions(); ++d) {
        Value& value = point[static_cast<std::size_t>(d)];
        if (model_.isDiscrete(d)) value = valueFor(model_, d, std::round(value.asDouble()));
    }
    incumbent_.offer(point, finder_);
}

/// Whether the incumbent cannot be told from the bound, which is noted.
bool OuterApproximation::closes(const ExactAnswer& answer) {
    if (answer.status != Status::Optimal) return false;
    if (model_.objective.empty()) return incumbent_.hasPoint();
    const double bound = answer.bound + sign_ * constant_;
    findings_.tighten(model_, 0, sign_ * bound);
    if (!incumbent_.hasPoint()) return false;
    const double value = sign_ * incumbent_.verdict().objectives.front().asDouble();
    return value - bound <= relationTolerance * std::fmax(1.0, std::fabs(bound));
}

ExactProblem OuterApproximation::withIntegersFixed(const std::vector<double>& levels) const {
    ExactProblem problem = problemOver(continuous_);
    for (std::size_t j = 0; j < linear_.nbColumns(); ++j) {
        if (linear_.isInteger[j] == 0) continue;
        const double level = std::clamp(std::round(levels[j]), linear_.lower[j], linear_.upper[j]);
        problem.lower[j] = level;
        problem.upper[j] = level;
    }
    return problem;
}

/// The continuous relaxation. @return whether the masters are worth a try.
bool OuterApproximation::openWithTangents() {
    // Tangents near the start, as if every column were far on the wrong side.
    std::vector<double> levels(linear_.nbColumns(), 0.0);
    for (std::size_t d = 0; d < start_.size(); ++d) {
        if (columnOf_[d] >= 0)
            levels[static_cast<std::size_t>(columnOf_[d])] = start_[d].asDouble();
    }
    for (const CurvedColumn& c : linear_.curved) {
        levels[static_cast<std::size_t>(c.column)] = c.isConvex ? -infinity : infinity;
    }
    reference_ = findReference();
    addTangents(levels);
    const ExactAnswer answer = solveContinuous(nullptr);
    if (answer.status == Status::Infeasible) proveInconsistency();
    if (answer.status == Status::Infeasible || answer.status == Status::Unbounded) return false;
    if (hasIntegers_) return true;
    offer(answer.levels);
    if (closes(answer)) result_.outcome = Outcome::Optimal;
    return false;
}

/// Rows widened by the judge's tolerance; the tangents hold as they stand.
void OuterApproximation::proveInconsistency() {
    // Where the objective is not defined there are no tangents, but there may be feasible points.
    for (const Objective& o : model_.objective) {
        if (propagator_.rangeOf(o.expression).mayBeNan) return;
    }
    ExactProblem relaxed = problemOver(linear_);
    for (std::size_t i = 0; i < linear_.nbRows(); ++i) {
        relaxed.rowLower[i] -= linear_.tolerance[i];
        relaxed.rowUpper[i] += linear_.tolerance[i];
    }
    std::fill(relaxed.cost.begin(), relaxed.cost.end(), 0.0);
    const ExactAnswer answer = solve(relaxed);
    if (answer.status != Status::Infeasible || incumbent_.hasPoint()) return;
    const auto ask = [this](const ExactProblem& problem) { return solve(problem); };
    if (!answer.isTreeSearched &&
        !findInfeasibilityProof(linear_, {linear_.lower, linear_.upper}, answer.multipliers, ask)) {
        return;
    }
    result_.outcome = Outcome::Inconsistent;
    result_.proof = "no point meets the constraints and tangents of the convex ones";
}

/// One master and the continuous problem for its integers. @return whether to go on.
bool OuterApproximation::improveByMaster() {
    const ExactAnswer master = solve(problemOver(linear_));
    if (master.status == Status::Infeasible) proveInconsistency();
    if (master.levels.empty()) return false;
    const std::size_t nbRows = linear_.nbRows();
    addTangents(master.levels);
    const ExactProblem fixed = withIntegersFixed(master.levels);
    const ExactAnswer best = solveContinuous(&fixed);
    if (best.status == Status::Optimal) offer(best.levels);
    if (closes(master)) result_.outcome = Outcome::Optimal;
    // Nothing learnt: the next master would be the same.
    return result_.outcome == Outcome::Open && linear_.nbRows() > nbRows;
}

Conclusion OuterApproximation::run() {
    if (openWithTangents()) {
        for (int n = 0; n < mostMasters && !mustStop() && improveByMaster(); ++n) {
        }
    }
    if (result_.outcome == Outcome::Optimal) {
        result_.proof = "outer approximation (" + std::string(exactBackEndName()) + ")";
    }
    return std::move(result_);
}

class Convex final : public Method {
public:
    using Method::Method;
    [[nodiscard]] std::string_view name() const override { return "outer approximation"; }
    [[nodiscard]] std::string reasonAgainst() override;
    void run(Pace& pace) override {
        findings().conclusion =
            OuterApproximation(ground(), findings(), name(), pace, ground().takeLinearModel())
                .run();
    }
};

std::string Convex::reasonAgainst() {
    if (!exactBackEndAbilities().linear) return "this engine was built without an exact back end";
    const LinearModel* linear = ground().linearModel();
    if (linear == nullptr) return "the model is not seen to be convex";
    if (linear->curved.empty()) return "the model is linear";
    return model().objective.size() > 1 ? "there are several objectives" : "";
}

}  // namespace

std::unique_ptr<Method> makeOuterApproximation(Ground& ground) {
    return std::make_unique<Convex>(ground);
}

}  // namespace engine
