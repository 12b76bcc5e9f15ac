#include "methods/linear.hpp"

#include <algorithm>
#include <cmath>

#include "back_ends/exact_back_end.hpp"
#include "methods/far_bounds.hpp"
#include "methods/infeasibility_proof.hpp"
#include "model/domain.hpp"
#include "model/tolerances.hpp"

namespace engine {
namespace {

using Status = ExactAnswer::Status;

bool hasIntegers(const LinearModel& linear) {
    return std::find(linear.isInteger.begin(), linear.isInteger.end(), 1) != linear.isInteger.end();
}

/// A bound on its way is loosened by what the back end's tolerances may have added to it.
double relaxed(double bound) {
    return bound - backEndTolerance * std::fmax(1.0, std::fabs(bound));
}

/// One solve from the first objective to the last.
class LinearProof {
public:
    LinearProof(const Ground& ground, Findings& findings, std::string_view finder, Pace& pace,
                LinearModel linear);

    [[nodiscard]] Conclusion run();

private:
    [[nodiscard]] ExactProblem problemFor(const LinearForm& cost, double sign) const;
    [[nodiscard]] ExactSettings settings(double tolerance) const {
        return {pace_, ground_.seed, tolerance};
    }
    ExactAnswer solveWithoutFarBounds(const ExactProblem& problem, const ExactSettings& settings);
    [[nodiscard]] double cutoffOf(const LinearForm& form, double sign) const;
    bool proveObjective(const LinearForm& form, bool maximise);
    ExactAnswer solveRelaxed(double share);
    void proveInconsistency(const ExactAnswer& answer);
    bool isProved(const LinearForm& form, double sign, std::size_t position, double bound) const;
    void offer(const std::vector<double>& levels);
    void noteBound(double bound) {
        if (!model_.objective.empty()) findings_.tighten(model_, 0, bound);
    }
    void offerSolvedAgain(ExactProblem problem, const std::vector<double>& levels);
    void fixObjective(const LinearForm& form, double sign, std::size_t position);

    const Ground& ground_;
    const ClosedModel& model_;
    Findings& findings_;
    FeasibleIncumbent& incumbent_;
    std::string_view finder_;
    Pace& pace_;
    LinearModel linear_;
    std::vector<double> propagatedLower_;  ///< [nbColumns]
    std::vector<double> propagatedUpper_;  ///< [nbColumns]
    std::size_t nbProved_ = 0;             ///< objectives
    Conclusion result_;
};

LinearProof::LinearProof(const Ground& ground, Findings& findings, std::string_view finder,
                         Pace& pace, LinearModel linear)
    : ground_(ground),
      model_(ground.model),
      findings_(findings),
      incumbent_(findings.incumbent),
      finder_(finder),
      pace_(pace),
      linear_(std::move(linear)),
      propagatedLower_(linear_.lower),
      propagatedUpper_(linear_.upper) {
    // Bounds that propagation derived for continuous columns carry the judge's tolerance; the rows
    // say the same without it. Proofs that take the tolerance into account keep them.
    for (std::size_t j = 0; j < linear_.nbColumns(); ++j) {
        const DecisionIndex d = linear_.decision[j];
        if (d < 0 || linear_.isInteger[j] != 0) continue;
        linear_.lower[j] = model_.domain[static_cast<std::size_t>(d)].lower;
        linear_.upper[j] = model_.domain[static_cast<std::size_t>(d)].upper;
    }
}

ExactProblem LinearProof::problemFor(const LinearForm& cost, double sign) const {
    ExactProblem problem{linear_,          std::vector<double>(linear_.nbColumns(), 0.0),
                         linear_.lower,    linear_.upper,
                         linear_.rowLower, linear_.rowUpper};
    for (std::size_t k = 0; k < cost.column.size(); ++k) {
        problem.cost[static_cast<std::size_t>(cost.column[k])] = sign * cost.coefficient[k];
    }
    return problem;
}

/// Far bounds count only when it cannot be helped: those that the optimum without them misses are
/// put back, at last all.
ExactAnswer LinearProof::solveWithoutFarBounds(const ExactProblem& problem,
                                               const ExactSettings& settings) {
    constexpr int mostRounds = 3;
    ExactProblem open = problem;
    bool areAllBack = !openFarBounds(open, settings.feasibilityTolerance);
    for (int round = 1;; ++round) {
        ExactAnswer answer = solveExactly(open, settings);
        const bool isOptimal = answer.status == Status::Optimal;
        // Optimal without levels says that no point is better than the incumbent.
        if (areAllBack || answer.status == Status::Infeasible ||
            (isOptimal && answer.levels.empty()) || pace_.mustEnd()) {
            return answer;
        }
        areAllBack = !isOptimal || round == mostRounds;
        const bool restored =
            restoreMissedBounds(open, problem, isOptimal ? answer.levels : std::vector<double>{});
        if (isOptimal && !restored) return answer;
        if (areAllBack) restoreMissedBounds(open, problem, {});
    }
}

void LinearProof::offer(const std::vector<double>& levels) {
    if (levels.empty()) return;
    Point point = ground_.start;
    for (std::size_t j = 0; j < linear_.nbColumns(); ++j) {
        const DecisionIndex d = linear_.decision[j];
        if (d < 0) continue;
        const double level = linear_.isInteger[j] != 0 ? std::round(levels[j]) : levels[j];
        const double inside = std::clamp(level, linear_.lower[j], linear_.upper[j]);
        point[static_cast<std::size_t>(d)] = valueFor(model_, d, inside);
    }
    incumbent_.offer(point, finder_);
}

/// The integers fixed at their rounded levels, the rest solved once more with a tight tolerance.
void LinearProof::offerSolvedAgain(ExactProblem problem, const std::vector<double>& levels) {
    for (std::size_t j = 0; j < linear_.nbColumns(); ++j) {
        if (linear_.isInteger[j] == 0) continue;
        const double level = std::clamp(std::round(levels[j]), linear_.lower[j], linear_.upper[j]);
        problem.lower[j] = level;
        problem.upper[j] = level;
    }
    // Few pivots, and without them the point found would be lost.
    constexpr std::int64_t enough = 10'000;
    ExactSettings tight = settings(polishTolerance);
    tight.grace = enough;
    offer(solveExactly(problem, tight).levels);
}

/// Whether the incumbent's objective cannot be told from the proved bound.
bool LinearProof::isProved(const LinearForm& form, double sign, std::size_t position,
                           double bound) const {
    if (!incumbent_.hasPoint()) return false;
    if (position >= model_.objective.size()) return true;
    const double value =
        sign * (incumbent_.verdict().objectives[position].asDouble() - form.constant);
    const double gap = value - bound;
    if (gap <= polishTolerance * std::max(1.0, std::fabs(bound + sign * form.constant))) {
        return true;
    }
    // Whole coefficients on integer columns: values are whole, and none lies strictly between.
    for (std::size_t k = 0; k < form.column.size(); ++k) {
        const double c = form.coefficient[k];
        if (linear_.isInteger[static_cast<std::size_t>(form.column[k])] == 0 || c != std::rint(c)) {
            return false;
        }
    }
    // As long as the values' own rounding cannot hide a step.
    return gap < 1.0 - 1e-6 && std::fabs(value) < 1e-6 * largestExactInteger;
}

/// Any point of the rows widened by `share` of the judge's tolerance.
ExactAnswer LinearProof::solveRelaxed(double share) {
    ExactProblem relaxed = problemFor({}, 1.0);
    for (std::size_t i = 0; i < linear_.nbRows(); ++i) {
        relaxed.rowLower[i] -= share * linear_.tolerance[i];
        relaxed.rowUpper[i] += share * linear_.tolerance[i];
    }
    return solveWithoutFarBounds(relaxed, settings(backEndTolerance));
}

void LinearProof::proveInconsistency(const ExactAnswer& answer) {
    const auto ask = [this](const ExactProblem& problem) {
        return solveExactly(problem, settings(backEndTolerance));
    };
    if (!answer.isTreeSearched &&
        findInfeasibilityProof(linear_, {propagatedLower_, propagatedUpper_}, answer.multipliers,
                               ask)) {
        result_.outcome = Outcome::Inconsistent;
        result_.proof = "a combination of the constraints that no point within the bounds meets";
        return;
    }
    const ExactAnswer again = solveRelaxed(1.0);
    if (again.status == Status::Optimal) {
        // Only by the tolerance feasible: points well within it may pass the judge.
        offer(solveRelaxed(0.5).levels);
    }
    // A tree searched to its end has no multipliers to show.
    if (!again.isTreeSearched || incumbent_.hasPoint()) return;
    result_.outcome = Outcome::Inconsistent;
    result_.proof = "no feasible point in the whole branch-and-cut tree";
}

/// The cost that the tree need not look for: no better than the incumbent's beyond what tolerances
/// explain, so that the tree still finds a cleaner point of the same value.
double LinearProof::cutoffOf(const LinearForm& form, double sign) const {
    if (!incumbent_.hasPoint() || nbProved_ >= model_.objective.size()) return infinity;
    const double value =
        sign * (incumbent_.verdict().objectives[nbProved_].asDouble() - form.constant);
    return value + relationTolerance * std::max(1.0, std::fabs(value));
}

/// @return false: nothing more can be proved.
bool LinearProof::proveObjective(const LinearForm& form, bool maximise) {
    const double sign = maximise ? -1.0 : 1.0;
    const ExactProblem problem = problemFor(form, sign);
    ExactSettings withPoints = settings(backEndTolerance);
    withPoints.cutoff = [&] { return cutoffOf(form, sign); };
    if (nbProved_ == 0) {
        withPoints.onBound = [&](double bound, std::int64_t nbNodes) {
            noteBound(sign * relaxed(bound) + form.constant);
            findings_.nbNodes = nbNodes;
        };
    }
    withPoints.onPoint = [&](const std::vector<double>& levels) { offer(levels); };
    const ExactAnswer answer = solveWithoutFarBounds(problem, withPoints);
    if (answer.status == Status::Infeasible) {
        if (nbProved_ == 0) proveInconsistency(answer);
        return false;
    }
    const bool isOptimal = answer.status == Status::Optimal;
    if (isOptimal && nbProved_ == 0) noteBound(sign * answer.bound + form.constant);
    if (answer.levels.empty() && !isOptimal) return false;
    // Solved again first: its point uses up less of the tolerance.
    if (hasIntegers(linear_) && !answer.levels.empty()) offerSolvedAgain(problem, answer.levels);
    if (!incumbent_.hasPoint() || (isOptimal && !isProved(form, sign, nbProved_, answer.bound))) {
        offer(answer.levels);
    }
    if (!hasIntegers(linear_) && !incumbent_.hasPoint()) offerSolvedAgain(problem, answer.levels);
    if (!isOptimal || !isProved(form, sign, nbProved_, answer.bound)) return false;
    fixObjective(form, sign, nbProved_);
    ++nbProved_;
    return true;
}

/// The next objective looks only at points that are as good in this one.
void LinearProof::fixObjective(const LinearForm& form, double sign, std::size_t position) {
    if (position + 1 >= model_.objective.size()) return;
    const double value = incumbent_.verdict().objectives[position].asDouble() - form.constant;
    linear_.column.insert(linear_.column.end(), form.column.begin(), form.column.end());
    linear_.coefficient.insert(linear_.coefficient.end(), form.coefficient.begin(),
                               form.coefficient.end());
    linear_.rowStart.push_back(static_cast<std::int32_t>(linear_.column.size()));
    linear_.rowLower.push_back(sign > 0.0 ? -infinity : value);
    linear_.rowUpper.push_back(sign > 0.0 ? value : infinity);
    linear_.tolerance.push_back(0.0);
}

Conclusion LinearProof::run() {
    const std::vector<LinearObjective> objectives =
        linear_.objective.empty() ? std::vector<LinearObjective>(1) : linear_.objective;
    const bool allProved = std::all_of(
        objectives.begin(), objectives.end(),
        [this](const LinearObjective& o) { return proveObjective(o.form, o.maximise); });
    if (allProved) {
        result_ = {Outcome::Optimal,
                   std::string(finder_) + " (" + std::string(exactBackEndName()) + ")"};
    }
    return std::move(result_);
}

class Linear : public Method {
public:
    Linear(Ground& ground, bool isInteger) : Method(ground), isInteger_(isInteger) {}
    [[nodiscard]] std::string_view name() const override {
        return isInteger_ ? "branch and cut" : "simplex";
    }
    [[nodiscard]] std::string reasonAgainst() override;
    /// A tree is most likely to finish the model, and the simplex method sure to.
    [[nodiscard]] double weight() const override { return isInteger_ ? 9.0 : infinity; }
    void run(Pace& pace) override {
        findings().conclusion =
            LinearProof(ground(), findings(), name(), pace, ground().takeLinearModel()).run();
    }

private:
    bool isInteger_;
};

std::string Linear::reasonAgainst() {
    const ExactAbilities abilities = exactBackEndAbilities();
    if (!(isInteger_ ? abilities.integer : abilities.linear)) {
        return "this engine was built without an exact back end";
    }
    const LinearModel* linear = ground().linearModel();
    if (linear == nullptr || !linear->curved.empty()) return "the model is not linear";
    if (hasIntegers(*linear) == isInteger_) return {};
    return isInteger_ ? "no decision is an integer" : "some decisions are integers";
}

}  // namespace

std::unique_ptr<Method> makeSimplex(Ground& ground) {
    return std::make_unique<Linear>(ground, /*isInteger=*/false);
}

std::unique_ptr<Method> makeBranchAndCut(Ground& ground) {
    return std::make_unique<Linear>(ground, /*isInteger=*/true);
}

}  // namespace engine
