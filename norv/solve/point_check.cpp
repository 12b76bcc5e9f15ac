#include "solve/point_check.hpp"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <span>
#include <string_view>
#include <vector>

#include "hostapi/codes.hpp"
#include "solve/number_text.hpp"

namespace norv {
namespace {

namespace variable_type = hostapi::variable_type;
namespace equation_type = hostapi::equation_type;

double sized(double violation, double left, double right) {
    return violation / std::max({1.0, std::fabs(left), std::fabs(right)});
}

/// How far `value` is below `bound`, scaled; 0 when it is not.
double below(double value, double bound) {
    return value < bound ? sized(bound - value, value, bound) : 0.0;
}

double outside(double value, double lower, double upper) {
    return std::max(below(value, lower), below(-value, -upper));
}

double rowViolation(std::int32_t type, double value, double side) {
    switch (type) {
        case equation_type::greater:
            return below(value, side);
        case equation_type::less:
            return below(-value, -side);
        case equation_type::free:
            return 0.0;
        default:
            return outside(value, side, side);
    }
}

double variableViolation(const Model& model, std::int32_t variable, double level) {
    const std::int32_t type = model.variableType(variable);
    double violation = outside(level, model.lower(variable), model.upper(variable));
    if (type == variable_type::semiContinuous || type == variable_type::semiInteger) {
        violation = std::min(violation, std::fabs(level));
    }
    if (type == variable_type::binary || type == variable_type::integer ||
        type == variable_type::semiInteger) {
        violation = std::max(violation, std::fabs(level - std::round(level)));
    }
    return violation;
}

/// The largest level, in magnitude, outside the best place for those that may differ from 0.
double setViolation(const SpecialOrderedSet& set, std::span<const double> levels) {
    const auto size = [&](std::size_t k) {
        const double level = levels[static_cast<std::size_t>(set.members[k])];
        return std::isnan(level) ? std::numeric_limits<double>::infinity() : std::fabs(level);
    };
    const std::size_t nbMembers = set.members.size();
    const auto nbNonzeros = static_cast<std::size_t>(set.nbNonzeros());
    if (nbMembers <= nbNonzeros) return 0.0;
    // The largest of the last k members; of the first ones a running maximum.
    std::vector<double> largestFrom(nbMembers + 1, 0.0);
    for (std::size_t k = nbMembers; k-- > 0;)
        largestFrom[k] = std::max(largestFrom[k + 1], size(k));
    double least = std::numeric_limits<double>::infinity();
    double largestBefore = 0.0;
    for (std::size_t k = 0; k + nbNonzeros <= nbMembers; ++k) {
        least = std::min(least, std::max(largestBefore, largestFrom[k + nbNonzeros]));
        largestBefore = std::max(largestBefore, size(k));
    }
    return least;
}

class Findings {
public:
    /// @param keeps  each violation, not only the worst.
    explicit Findings(bool keeps = false) : keeps_(keeps) {}

    void add(double violation, const char* kind, const std::string& name) {
        if (std::isnan(violation)) violation = std::numeric_limits<double>::infinity();
        if (violation > checkTolerance) ++check_.nbViolated;
        if (violation > checkTolerance && std::string_view(kind) == "row ") ++check_.nbViolatedRows;
        if (violation > checkTolerance && keeps_) kept_.push_back({violation, kind + name});
        if (violation <= check_.largestViolation) return;
        check_.largestViolation = violation;
        check_.worst = kind + name;
    }

    void addLoose(const std::string& item, const LooseRelation& relation) {
        if (check_.nbLoose++ > 0) return;
        check_.loose = item + ": relation " + numberText(relation.left) + ' ' + relation.sign +
                       ' ' + numberText(relation.right);
    }

    [[nodiscard]] PointCheck result() {
        check_.passed = check_.nbViolated == 0;
        return check_;
    }

    [[nodiscard]] std::vector<Violation>& kept() { return kept_; }

private:
    bool keeps_;
    std::vector<Violation> kept_;
    PointCheck check_;
};

double rowViolation(const Model& model, std::int32_t i, std::span<const double> levels,
                    Leniency* leniency) {
    const Evaluation row = model.evaluateRow(i, levels, leniency);
    if (row.nbErrors != 0) return std::numeric_limits<double>::infinity();
    return rowViolation(model.rowType(i), row.value, model.rightHandSide(i));
}

void checkRow(const Model& model, std::int32_t i, std::span<const double> levels,
              Findings& findings) {
    const double violation = rowViolation(model, i, levels, nullptr);
    if (violation <= 0.0) return;
    Leniency leniency{checkTolerance, {}};
    const bool isLoose = !(violation <= checkTolerance) &&
                         rowViolation(model, i, levels, &leniency) <= checkTolerance &&
                         leniency.first;
    if (isLoose) return findings.addLoose("row " + model.rowName(i), *leniency.first);
    findings.add(violation, "row ", model.rowName(i));
}

void addLevels(const Model& model, std::span<const double> levels, Findings& findings) {
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        const double violation = variableViolation(model, j, levels[static_cast<std::size_t>(j)]);
        if (!(violation <= 0.0)) findings.add(violation, "variable ", model.variableName(j));
    }
    for (std::int32_t i = 0; i < model.nbRows(); ++i) checkRow(model, i, levels, findings);
    for (const SpecialOrderedSet& set : model.specialOrderedSets()) {
        const double violation = setViolation(set, levels);
        if (violation > 0.0) findings.add(violation, "special ordered set ", set.name);
    }
}

void checkObjective(const Model& model, Findings& findings) {
    const Evaluation objective = model.evaluateObjective(model.levels());
    const double reported = model.headAndTail(hostapi::head_and_tail::objective);
    findings.add(objective.nbErrors != 0 ? std::numeric_limits<double>::infinity()
                                         : outside(reported, objective.value, objective.value),
                 "the reported objective", {});
    Leniency leniency{checkTolerance, {}};
    const Evaluation loose = model.evaluateObjective(model.levels(), &leniency);
    if (leniency.first && outside(objective.value, loose.value, loose.value) > checkTolerance)
        findings.addLoose("the objective", *leniency.first);
}

}  // namespace

PointCheck checkPoint(const Model& model) {
    Findings findings;
    addLevels(model, model.levels(), findings);
    checkObjective(model, findings);
    return findings.result();
}

PointCheck checkLevels(const Model& model, std::span<const double> levels) {
    Findings findings;
    addLevels(model, levels, findings);
    return findings.result();
}

std::vector<Violation> worstViolations(const Model& model, std::span<const double> levels,
                                       std::size_t nbMost) {
    Findings findings(/*keeps=*/true);
    addLevels(model, levels, findings);
    std::vector<Violation>& all = findings.kept();
    std::ranges::stable_sort(all, std::greater(), &Violation::size);
    all.resize(std::min(all.size(), nbMost));
    return std::move(all);
}

bool isFeasible(const Model& model, std::span<const double> levels) {
    return checkLevels(model, levels).passed;
}

bool claimsFeasiblePoint(std::int32_t modelStatus) {
    namespace status = hostapi::model_status;
    return modelStatus == status::optimal || modelStatus == status::locallyOptimal ||
           modelStatus == status::feasible || modelStatus == status::integerSolution ||
           modelStatus == status::solvedUnique;
}

}  // namespace norv
