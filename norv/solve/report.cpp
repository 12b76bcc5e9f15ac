#include "solve/report.hpp"

#include <algorithm>
#include <vector>

#include "hostapi/codes.hpp"
#include "solve/number_text.hpp"
#include "solve/status_text.hpp"

namespace norv {
namespace {

/// A violation below this is rounding, whatever row it is in.
constexpr double worthNaming = 1e-9;

std::string pointText(const PointCheck& check) {
    if (!check.passed) {
        return "FAILED, " + std::to_string(check.nbViolated) + " violated beyond " +
               numberText(checkTolerance) + ", most by " + numberText(check.largestViolation) +
               " (" + check.worst + ')';
    }
    std::string text = "passed";
    if (check.largestViolation >= worthNaming) {
        text += ", largest violation " + numberText(check.largestViolation, 3) + " (" +
                check.worst + ')';
    } else if (check.nbLoose == 0) {
        text += ", no row or bound violated";
    }
    if (check.nbLoose > 0) text += ", within tolerance only: " + check.loose;
    if (check.nbLoose > 1) text += " and " + std::to_string(check.nbLoose - 1) + " more";
    return text;
}

/// What stands in the way, when no point was found: the rows that the last one violates most.
void printViolated(std::ostream& out, const Model& model) {
    const std::vector<Violation> worst = worstViolations(model, model.levels(), 5);
    if (worst.empty()) return;
    out << "Violated most at the last point: ";
    for (std::size_t k = 0; k < worst.size(); ++k)
        out << (k > 0 ? ", " : "") << worst[k].what << " by " << numberText(worst[k].size, 3);
    out << ".\n";
}

const char* colourOf(Ending::Kind kind) {
    switch (kind) {
        case Ending::Kind::optimal:
        case Ending::Kind::feasible:
            return "\033[32m";
        case Ending::Kind::infeasible:
        case Ending::Kind::unbounded:
        case Ending::Kind::noneFound:
            return "\033[33m";
        default:
            return "\033[31m";
    }
}

}  // namespace

std::string checkText(const std::optional<PointCheck>& check) {
    return check ? pointText(*check) : "no feasible point reported";
}

void printSummary(std::ostream& out, const RunRecord& run, bool isColoured) {
    const Model& model = run.model();
    if (isColoured) out << colourOf(run.ending.kind);
    out << "Model status " << model.modelStatus() << " (" << modelStatusText(model.modelStatus())
        << "), solve status " << model.solveStatus() << " (" << solveStatusText(model.solveStatus())
        << ")." << (isColoured ? "\033[0m\n" : "\n");
    if (!run.result.verdict.text.empty()) out << "Meaning: " << run.result.verdict.text << ".\n";
    const bool isHostStop = run.ending.reason == StopReason::wallLimit ||
                            run.ending.reason == StopReason::noImprovement;
    if (isHostStop) out << "Stopped by the program: " << reasonText(run.ending.reason) << ".\n";
    if (run.result.check && model.modelType() != hostapi::model_type::squareSystem)
        out << "Objective: " << numberText(run.objective(), 10) << '\n';
    if (run.bound && run.ending.kind != Ending::Kind::optimal) {
        out << "Bound: " << numberText(*run.bound, 10);
        if (const auto gap = run.gap()) out << ", gap " << numberText(100.0 * *gap, 3) << " %";
        out << '\n';
    }
    out << "Check: " << checkText(run.result.check) << ".\n";
    if (run.ending.kind == Ending::Kind::noneFound) printViolated(out, model);
    out << "Time: " << numberText(run.times.reading, 2) << " s reading, "
        << numberText(run.times.solving, 2) << " s solving, " << numberText(run.times.checking, 2)
        << " s checking; " << numberText(model.headAndTail(hostapi::head_and_tail::iterations))
        << " iterations.\n";
}

void writeSolution(std::ostream& out, const Model& model) {
    const auto levels = model.levels();
    for (std::int32_t j = 0; j < model.nbVariables(); ++j) {
        const double level = levels[static_cast<std::size_t>(j)];
        if (level == 0.0) continue;
        out << model.variableName(j) << '\t' << numberText(level) << '\n';
    }
}

}  // namespace norv
