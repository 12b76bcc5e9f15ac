#include "solve/report.hpp"

#include "hostapi/codes.hpp"
#include "solve/number_text.hpp"
#include "solve/status_text.hpp"

namespace norv {
namespace {

std::string checkText(const PointCheck& check) {
    if (!check.passed) {
        return "FAILED, " + std::to_string(check.nbViolated) + " violated beyond " +
               numberText(checkTolerance) + ", most by " + numberText(check.largestViolation) +
               " (" + check.worst + ')';
    }
    if (check.worst.empty() && check.nbLoose == 0) return "passed, no row or bound violated";
    std::string text = "passed";
    if (!check.worst.empty())
        text +=
            ", largest violation " + numberText(check.largestViolation) + " (" + check.worst + ')';
    return text;
}

std::string looseText(const PointCheck& check) {
    if (check.nbLoose == 0) return {};
    std::string text = ", within tolerance only: " + check.loose;
    if (check.nbLoose > 1) text += " and " + std::to_string(check.nbLoose - 1) + " more";
    return text;
}

}  // namespace

void printSummary(std::ostream& out, const Model& model, const SolveResult& result) {
    const std::optional<PointCheck>& check = result.check;
    out << "Model status " << model.modelStatus() << " (" << modelStatusText(model.modelStatus())
        << "), solve status " << model.solveStatus() << " (" << solveStatusText(model.solveStatus())
        << ").\n";
    if (!result.verdict.text.empty()) out << "Meaning: " << result.verdict.text << ".\n";
    if (check && model.modelType() != hostapi::model_type::squareSystem) {
        out << "Objective: " << numberText(model.headAndTail(hostapi::head_and_tail::objective))
            << '\n';
    }
    out << "Check: "
        << (check ? checkText(*check) + looseText(*check) : "no feasible point reported") << ".\n";
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
