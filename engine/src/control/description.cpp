#include "control/description.hpp"

#include <algorithm>
#include <cinttypes>

#include "control/solver.hpp"
#include "model/number_text.hpp"
#include "model/operator_table.hpp"
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

std::string limitText(std::int64_t limit, std::int64_t unlimited) {
    return limit == unlimited ? "none" : numberText(Value::ofInt(limit));
}

int nbDecisions(const Model& model) {
    int n = 0;
    for (ExpressionIndex e = 0; e < model.nbExpressions(); ++e) {
        if (isDecisionOperator(model.operatorOf(e))) ++n;
    }
    return n;
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
    std::string text = formatText("%" PRId64 " s, %" PRId64 " iterations, ",
                                  solver.statistics.seconds(), solver.statistics.iterations);
    if (!solver.model.isClosed()) return text + "modelling";
    const Solution& solution = solver.solution();
    text += statusName(solution.status());
    const char* separator = ", objectives ";
    for (const Value objective : solution.verdict().objectives) {
        text += separator + numberText(objective);
        separator = " | ";
    }
    return text;
}

std::string statisticsInfo(const Solver& solver) {
    const Statistics& s = solver.statistics;
    return formatText("%" PRId64 " moves, %" PRId64 " accepted, %" PRId64 " improving", s.moves,
                      s.accepted, s.improving);
}

std::string solverDescription(const Solver& solver) {
    const Model& model = solver.model;
    const Parameters& p = solver.parameters;
    std::string text = formatText(
        "model: %d expressions, %" PRId64
        " operands, %d decisions, %d constraints, %d objectives\n"
        "parameters: threads %d, seed %d, annealing level %d, iterations between ticks "
        "%" PRId64 ", seconds between ticks %d",
        model.nbExpressions(), model.nbOperands(), nbDecisions(model),
        static_cast<int>(model.constraints().size()), static_cast<int>(model.objectives().size()),
        p.nbThreads, p.seed, p.annealingLevel, p.iterationsBetweenTicks, p.secondsBetweenTicks);
    for (std::size_t k = 0; k < p.thresholds.size(); ++k) {
        if (!p.thresholds[k]) continue;
        text += formatText("\nobjective %d: threshold %s", static_cast<int>(k),
                           numberText(Value::ofDouble(*p.thresholds[k])).c_str());
    }
    for (std::size_t k = 0; k < solver.phases.size(); ++k) {
        const Phase& phase = solver.phases[k];
        text += formatText("\nphase %d: time limit %s, iteration limit %s", static_cast<int>(k),
                           limitText(phase.timeLimit, timeLimitRange.highest).c_str(),
                           limitText(phase.iterationLimit, iterationLimitRange.highest).c_str());
    }
    return text;
}

}  // namespace engine
