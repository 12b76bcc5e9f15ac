#include "model/instance.hpp"

#include <algorithm>
#include <cmath>

namespace norv {

std::int32_t Instance::nbDiscrete() const noexcept {
    const Array<std::int32_t>& types = typesForLink.empty() ? variables.types : typesForLink;
    const auto nbContinuous =
        std::count(types.begin(), types.end(), hostapi::variable_type::continuous);
    return nbVariables() - static_cast<std::int32_t>(nbContinuous);
}

const InstructionList* Instance::listOf(std::int32_t row) const noexcept {
    if (listOfRow.empty() || listOfRow[row] < 0) return nullptr;
    return &lists[listOfRow[row]];
}

std::int32_t Instance::orderOf(std::int32_t row) const noexcept {
    if (listOf(row) != nullptr) return hostapi::function_order::nonlinear;
    return quadratic.nbEntries(row) > 0 ? hostapi::function_order::quadratic
                                        : hostapi::function_order::linear;
}

Evaluation Instance::evaluate(std::int32_t row, std::span<const double> levels,
                              Leniency* leniency) const {
    const Point point(levels);
    Evaluation result;
    for (std::int64_t k = entries.starts[row]; k < entries.starts[row + 1]; ++k) {
        if (!entries.isNonlinear(k))
            result.value += entries.values[k] * point[entries.variables[k]];
    }
    for (std::int64_t k = quadratic.starts[row]; k < quadratic.starts[row + 1]; ++k) {
        result.value +=
            quadratic.values[k] * point[quadratic.first[k]] * point[quadratic.second[k]];
    }
    if (const InstructionList* list = listOf(row)) {
        const Quantity part = evaluator.evaluate(*list, pool, levels, leniency);
        result.value += part.value;
        result.nbErrors += part.nbErrors;
    }
    if (std::isnan(result.value) && result.nbErrors == 0) result.nbErrors = 1;
    return result;
}

double project(double level, std::int32_t type, double lower, double upper) noexcept {
    if (std::isnan(level)) level = 0.0;
    const bool mayBeZero = type == hostapi::variable_type::semiContinuous ||
                           type == hostapi::variable_type::semiInteger;
    if (mayBeZero && lower > 0.0 && level < 0.5 * lower) return 0.0;
    // In this order an empty domain gives its lower bound.
    return std::max(lower, std::min(level, upper));
}

}  // namespace norv
