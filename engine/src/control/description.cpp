#include "control/description.hpp"

#include <chrono>
#include <cinttypes>
#include <cmath>
#include <optional>

#include "control/solver.hpp"
#include "model/number_text.hpp"
#include "model/refusal.hpp"

namespace engine {

namespace {

const char* statusName(ls_solution_status status) {
    switch (status) {
        case LS_STATUS_INCONSISTENT:
            return "inconsistent";
        case LS_STATUS_INFEASIBLE:
            return "infeasible";
        case LS_STATUS_FEASIBLE:
            return "feasible";
        case LS_STATUS_OPTIMAL:
            return "optimal";
    }
    return "unknown";
}

/// "1 objective", "2 objectives"; `kind` in the singular, with a regular plural.
std::string countText(std::size_t n, const char* kind) {
    return std::to_string(n) + " " + kind + (n == 1 ? "" : "s");
}

std::string sizesText(const Model& model) {
    std::size_t nbFloats = 0;
    std::size_t nbIntegers = 0;
    std::size_t nbBooleans = 0;
    for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) {
        const ls_operator op = model.operatorOf(e);
        nbFloats += op == LS_OP_FLOAT ? 1 : 0;
        nbIntegers += op == LS_OP_INT ? 1 : 0;
        nbBooleans += op == LS_OP_BOOL ? 1 : 0;
    }
    return "model: " + countText(nbFloats + nbIntegers + nbBooleans, "decision") + " (" +
           countText(nbFloats, "float") + ", " + countText(nbIntegers, "integer") + ", " +
           countText(nbBooleans, "boolean") + "), " +
           countText(model.constraints().size(), "constraint") + ", " +
           countText(model.objectives().size(), "objective") + ", " +
           countText(static_cast<std::size_t>(model.nbExpressions()), "expression") + ", " +
           countText(static_cast<std::size_t>(model.nbOperands()), "operand");
}

std::string limitsText(const std::vector<Phase>& phases) {
    std::string text;
    for (std::size_t k = 0; k < phases.size(); ++k) {
        const Phase& phase = phases[k];
        text += phases.size() == 1 ? "\nlimits: "
                                   : formatText("\nlimits of phase %d: ", static_cast<int>(k) + 1);
        text += phase.timeLimit == timeLimitRange.highest
                    ? "no time limit"
                    : formatText("%d seconds", phase.timeLimit);
        text += phase.iterationLimit == iterationLimitRange.highest
                    ? ", no iteration limit"
                    : formatText(", %" PRId64 " iterations", phase.iterationLimit);
    }
    return text;
}

std::string methodsText(const std::vector<MethodChoice>& choices) {
    std::string applying;
    std::string others;
    for (const MethodChoice& c : choices) {
        if (c.reasonAgainst.empty()) {
            applying.append(c.name).append(", ");
        } else {
            others.append("\nnot used: ").append(c.name).append(", because ");
            others += c.reasonAgainst;
        }
    }
    return "\nmethods: " + applying + "local search" + others;
}

std::string violationsText(const Solver& solver, const Solution& solution) {
    const Solution::Violations violations = solution.violations();
    if (violations.worst < 0) return "no feasible point known";
    const NameTable& names = solver.model.names;
    const std::string worst = names.isNamed(violations.worst)
                                  ? names.nameOf(violations.worst)
                                  : formatText("expression %d", violations.worst);
    return std::to_string(violations.nb) + " of " +
           std::to_string(solver.model.constraints().size()) + " constraints violated, worst by " +
           worst;
}

std::string objectiveText(const Solution& solution) {
    std::string text;
    for (const Value objective : solution.verdict().objectives) {
        text += (text.empty() ? ", objective " : " | ") + numberText(objective);
    }
    return text;
}

}  // namespace

const char* stateName(int state) {
    switch (state) {
        case LS_STATE_MODELING:
            return "modelling";
        case LS_STATE_RUNNING:
            return "running";
        case LS_STATE_CLOSED:
            return "closed";
        case LS_STATE_PAUSED:
            return "paused";
        default:
            return "solved";
    }
}

std::string solverInfo(Solver& solver) {
    const Statistics& s = solver.statistics;
    std::string text = formatText("%.1f s, %" PRId64 " iterations, ",
                                  std::chrono::duration<double>(s.elapsed).count(), s.iterations);
    if (!solver.model.isClosed()) return text + "modelling";
    const Solution& solution = solver.solution();
    const ls_solution_status status = solution.status();
    text += statusName(status);
    const bool isFeasible = status >= LS_STATUS_FEASIBLE;
    text += isFeasible ? objectiveText(solution) : ", " + violationsText(solver, solution);
    if (!solution.bounds().empty() && std::isfinite(solution.bounds().front())) {
        text += ", bound " + numberText(Value::ofDouble(solution.bounds().front()));
    }
    if (const std::optional<double> gap = solution.gap()) {
        text += formatText(", gap %.3g%%", 100.0 * *gap);
    }
    const std::string_view finder = solution.claimed().finder;
    if (isFeasible && !finder.empty()) text.append(", found by ").append(finder);
    return text;
}

std::string statisticsInfo(const Solver& solver) {
    const Statistics& s = solver.statistics;
    std::string text = formatText("%" PRId64 " moves, %" PRId64 " accepted, %" PRId64 " improving",
                                  s.moves, s.accepted, s.improving);
    if (s.nodes > 0) text += formatText(", %" PRId64 " nodes", s.nodes);
    return text;
}

std::string solverDescription(const Solver& solver) {
    const Parameters& p = solver.parameters;
    std::string text =
        sizesText(solver.model) +
        formatText(
            "\nparameters: threads %d, seed %d, annealing level %d, iterations between ticks "
            "%" PRId64 ", seconds between ticks %d",
            p.nbThreads, p.seed, p.annealingLevel, p.iterationsBetweenTicks, p.secondsBetweenTicks);
    for (std::size_t k = 0; k < p.thresholds.size(); ++k) {
        if (!p.thresholds[k]) continue;
        text += formatText("\nthreshold of objective %d: %s", static_cast<int>(k) + 1,
                           numberText(Value::ofDouble(*p.thresholds[k])).c_str());
    }
    text += limitsText(solver.phases);
    if (!solver.methodChoices.empty()) text += methodsText(solver.methodChoices);
    return text;
}

}  // namespace engine
