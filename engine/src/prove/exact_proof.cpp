#include "prove/exact_proof.hpp"

#include <algorithm>
#include <cmath>
#include <optional>

#include "prove/exact_back_end.hpp"
#include "prove/exhaustion.hpp"
#include "prove/far_bounds.hpp"
#include "prove/infeasibility_proof.hpp"
#include "prove/linear_view.hpp"
#include "prove/outer_approximation.hpp"

namespace engine {
namespace {

/// Objectives this near are the same: absolute, relative above 1.
constexpr double optimalityTolerance = 1e-9;
constexpr double usualTolerance = 1e-7;
/// For points that the judge refused.
constexpr double tightTolerance = 1e-9;

using Status = ExactAnswer::Status;
using Outcome = Preparation::Outcome;

class ExactProver {
public:
    ExactProver(const ClosedModel& model, const Point& start, ProvedIncumbent& incumbent,
                ExactRun run, LinearModel linear)
        : model_(model),
          start_(start),
          incumbent_(incumbent),
          run_(run),
          linear_(std::move(linear)),
          propagatedLower_(linear_.lower),
          propagatedUpper_(linear_.upper) {
        // Bounds that propagation derived for continuous columns carry the judge's tolerance; the
        // rows say the same without it. Proofs that take the tolerance into account keep them.
        for (std::size_t j = 0; j < linear_.nbColumns(); ++j) {
            const DecisionIndex d = linear_.decision[j];
            if (d < 0 || linear_.isInteger[j] != 0) continue;
            linear_.lower[j] = model.domain[static_cast<std::size_t>(d)].lower;
            linear_.upper[j] = model.domain[static_cast<std::size_t>(d)].upper;
        }
    }

    ExactProof run();

private:
    [[nodiscard]] ExactProblem problemFor(const LinearForm& cost, double sign) const;
    [[nodiscard]] ExactSettings settings(double tolerance) const {
        return {run_.pace, run_.seed, tolerance};
    }
    ExactAnswer solveWithoutFarBounds(const ExactProblem& problem, const ExactSettings& settings);
    [[nodiscard]] double cutoffOf(const LinearForm& form, double sign) const;
    bool proveObjective(const LinearForm& form, bool maximise);
    ExactAnswer solveRelaxed(double share);
    void proveInconsistency(const ExactAnswer& answer);
    bool isProved(const LinearForm& form, double sign, std::size_t position, double bound) const;
    void offer(const std::vector<double>& levels);
    void offerSolvedAgain(ExactProblem problem, const std::vector<double>& levels);
    void fixObjective(const LinearForm& form, double sign, std::size_t position);
    [[nodiscard]] bool hasIntegers() const {
        return std::find(linear_.isInteger.begin(), linear_.isInteger.end(), 1) !=
               linear_.isInteger.end();
    }

    const ClosedModel& model_;
    const Point& start_;
    ProvedIncumbent& incumbent_;
    ExactRun run_;
    LinearModel linear_;
    std::vector<double> propagatedLower_;  ///< [nbColumns]
    std::vector<double> propagatedUpper_;  ///< [nbColumns]
    std::size_t nbProved_ = 0;             ///< objectives
    ExactProof result_;
};

ExactProblem ExactProver::problemFor(const LinearForm& cost, double sign) const {
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
ExactAnswer ExactProver::solveWithoutFarBounds(const ExactProblem& problem,
                                               const ExactSettings& settings) {
    constexpr int mostRounds = 3;
    ExactProblem open = problem;
    bool areAllBack = !openFarBounds(open, settings.feasibilityTolerance);
    for (int round = 1;; ++round) {
        ExactAnswer answer = solveExactly(open, settings);
        const bool isOptimal = answer.status == Status::Optimal;
        // Optimal without levels says that no point is better than the incumbent.
        if (areAllBack || answer.status == Status::Infeasible ||
            (isOptimal && answer.levels.empty()) || run_.pace.mustEnd()) {
            return answer;
        }
        areAllBack = !isOptimal || round == mostRounds;
        const bool restored =
            restoreMissedBounds(open, problem, isOptimal ? answer.levels : std::vector<double>{});
        if (isOptimal && !restored) return answer;
        if (areAllBack) restoreMissedBounds(open, problem, {});
    }
}

void ExactProver::offer(const std::vector<double>& levels) {
    if (levels.empty()) return;
    Point point = start_;
    for (std::size_t j = 0; j < linear_.nbColumns(); ++j) {
        const DecisionIndex d = linear_.decision[j];
        if (d < 0) continue;
        const double level = linear_.isInteger[j] != 0 ? std::round(levels[j]) : levels[j];
        const double inside = std::clamp(level, linear_.lower[j], linear_.upper[j]);
        point[static_cast<std::size_t>(d)] = valueFor(model_, d, inside);
    }
    incumbent_.offer(point);
}

/// The integers fixed at their rounded levels, the rest solved once more with a tight tolerance.
void ExactProver::offerSolvedAgain(ExactProblem problem, const std::vector<double>& levels) {
    for (std::size_t j = 0; j < linear_.nbColumns(); ++j) {
        if (linear_.isInteger[j] == 0) continue;
        const double level = std::clamp(std::round(levels[j]), linear_.lower[j], linear_.upper[j]);
        problem.lower[j] = level;
        problem.upper[j] = level;
    }
    // Few pivots, and without them the point found would be lost.
    constexpr std::int64_t enough = 10'000;
    ExactSettings tight = settings(tightTolerance);
    tight.grace = enough;
    offer(solveExactly(problem, tight).levels);
}

/// Whether the incumbent's objective cannot be told from the proved bound.
bool ExactProver::isProved(const LinearForm& form, double sign, std::size_t position,
                           double bound) const {
    if (!incumbent_.hasPoint()) return false;
    if (position >= model_.objective.size()) return true;
    const double value =
        sign * (incumbent_.verdict().objectives[position].asDouble() - form.constant);
    const double gap = value - bound;
    if (gap <= optimalityTolerance * std::max(1.0, std::fabs(bound + sign * form.constant))) {
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
ExactAnswer ExactProver::solveRelaxed(double share) {
    ExactProblem relaxed = problemFor({}, 1.0);
    for (std::size_t i = 0; i < linear_.nbRows(); ++i) {
        relaxed.rowLower[i] -= share * linear_.tolerance[i];
        relaxed.rowUpper[i] += share * linear_.tolerance[i];
    }
    return solveWithoutFarBounds(relaxed, settings(usualTolerance));
}

void ExactProver::proveInconsistency(const ExactAnswer& answer) {
    const auto ask = [this](const ExactProblem& problem) {
        return solveExactly(problem, settings(usualTolerance));
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
double ExactProver::cutoffOf(const LinearForm& form, double sign) const {
    if (!incumbent_.hasPoint() || nbProved_ >= model_.objective.size()) return infinity;
    const double value =
        sign * (incumbent_.verdict().objectives[nbProved_].asDouble() - form.constant);
    return value + relationTolerance * std::max(1.0, std::fabs(value));
}

/// @return false: nothing more can be proved.
bool ExactProver::proveObjective(const LinearForm& form, bool maximise) {
    const double sign = maximise ? -1.0 : 1.0;
    const ExactProblem problem = problemFor(form, sign);
    ExactSettings withPoints = settings(usualTolerance);
    withPoints.cutoff = [&] { return cutoffOf(form, sign); };
    withPoints.onPoint = [&](const std::vector<double>& levels) { offer(levels); };
    const ExactAnswer answer = solveWithoutFarBounds(problem, withPoints);
    if (answer.status == Status::Infeasible) {
        if (nbProved_ == 0) proveInconsistency(answer);
        return false;
    }
    const bool isOptimal = answer.status == Status::Optimal;
    if (answer.levels.empty() && !isOptimal) return false;
    // Solved again first: its point uses up less of the tolerance.
    if (hasIntegers() && !answer.levels.empty()) offerSolvedAgain(problem, answer.levels);
    if (!incumbent_.hasPoint() || (isOptimal && !isProved(form, sign, nbProved_, answer.bound))) {
        offer(answer.levels);
    }
    if (!hasIntegers() && !incumbent_.hasPoint()) offerSolvedAgain(problem, answer.levels);
    if (!isOptimal || !isProved(form, sign, nbProved_, answer.bound)) return false;
    fixObjective(form, sign, nbProved_);
    ++nbProved_;
    return true;
}

/// The next objective looks only at points that are as good in this one.
void ExactProver::fixObjective(const LinearForm& form, double sign, std::size_t position) {
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

ExactProof ExactProver::run() {
    run_.kind = hasIntegers() ? ProofKind::Tree : ProofKind::LinearProgram;
    if (linear_.objective.empty()) {
        if (proveObjective({}, /*maximise=*/false)) result_.outcome = Outcome::Optimal;
    } else {
        const std::vector<LinearObjective> objectives = linear_.objective;
        const bool allProved = std::all_of(
            objectives.begin(), objectives.end(),
            [this](const LinearObjective& o) { return proveObjective(o.form, o.maximise); });
        if (allProved) result_.outcome = Outcome::Optimal;
    }
    if (result_.outcome == Outcome::Optimal) {
        result_.proof = std::string(hasIntegers() ? "branch and cut" : "simplex") + " (" +
                        std::string(exactBackEndName()) + ")";
    }
    return std::move(result_);
}

}  // namespace

ExactProof proveExactly(const ClosedModel& model, const Propagator& propagator, const Point& start,
                        ProvedIncumbent& incumbent, ExactRun run) {
    if (!exactBackEndAbilities().linear || run.pace.mustEnd()) return {};
    std::vector<Value> values;
    judge(model, start, values);
    std::optional<LinearModel> linear = linearViewOf(model, propagator, values);
    if (!linear) return {};
    if (!linear->curved.empty()) {
        return proveByOuterApproximation(model, propagator, start, incumbent, run,
                                         *std::move(linear));
    }
    return ExactProver(model, start, incumbent, run, *std::move(linear)).run();
}

}  // namespace engine
