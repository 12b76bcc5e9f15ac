#include "solve/report.hpp"

#include <charconv>

#include "hostapi/codes.hpp"
#include "solve/status_text.hpp"

namespace norv {
namespace {

void printCheck(std::ostream& out, const std::optional<PointCheck>& check) {
    if (!check) {
        out << "Check: no feasible point reported.\n";
    } else if (check->passed && check->worst.empty()) {
        out << "Check: passed, no row or bound violated.\n";
    } else if (check->passed) {
        out << "Check: passed, largest violation " << numberText(check->largestViolation) << " ("
            << check->worst << ").\n";
    } else {
        out << "Check: FAILED, " << check->nbViolated << " violated beyond "
            << numberText(checkTolerance) << ", most by " << numberText(check->largestViolation)
            << " (" << check->worst << ").\n";
    }
}

}  // namespace

std::string numberText(double value) {
    char text[32];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value);
    return error == std::errc() ? std::string(text, end) : std::string();
}

void printSummary(std::ostream& out, const Model& model, const std::optional<PointCheck>& check) {
    out << "Model status " << model.modelStatus() << " (" << modelStatusText(model.modelStatus())
        << "), solve status " << model.solveStatus() << " (" << solveStatusText(model.solveStatus())
        << ").\n";
    if (check && model.modelType() != hostapi::model_type::squareSystem) {
        out << "Objective: " << numberText(model.headAndTail(hostapi::head_and_tail::objective))
            << '\n';
    }
    printCheck(out, check);
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
