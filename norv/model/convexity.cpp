#include <algorithm>
#include <vector>

#include "model/definiteness.hpp"
#include "model/instance.hpp"

namespace norv {
namespace {

/// @param sign  -1: the function is turned upside down first.
bool isSurelyConvex(const Instance& instance, std::int32_t row, double sign) {
    if (instance.listOf(row) != nullptr) return false;
    const QuadraticRows& quadratic = instance.quadratic;
    std::vector<FormTerm> terms;
    for (std::int64_t k = quadratic.starts[row]; k < quadratic.starts[row + 1]; ++k)
        terms.push_back({quadratic.first[k], quadratic.second[k], sign * quadratic.values[k]});
    return terms.empty() || isSurelySemidefinite(terms);
}

bool isRowSurelyConvex(const Instance& instance, std::int32_t row) {
    switch (instance.rows.types[row]) {
        case hostapi::equation_type::free:
            return true;
        case hostapi::equation_type::less:
            return isSurelyConvex(instance, row, 1.0);
        case hostapi::equation_type::greater:
            return isSurelyConvex(instance, row, -1.0);
        case hostapi::equation_type::equality:
            return instance.orderOf(row) == hostapi::function_order::linear;
        default:
            return false;
    }
}

}  // namespace

bool Instance::isSurelyConvex() const {
    if (nbDiscrete() > 0) return false;
    const bool minimises = sense == hostapi::objective_sense::minimise;
    if (!norv::isSurelyConvex(*this, objective(), minimises ? 1.0 : -1.0)) return false;
    for (std::int32_t i = 0; i < nbRows(); ++i) {
        if (!isRowSurelyConvex(*this, i)) return false;
    }
    return true;
}

bool Instance::isUsed(std::int32_t variable) const noexcept {
    const auto* const inObjective = entries.variables.data();
    const bool isInObjective =
        std::binary_search(inObjective + entries.starts[objective()],
                           inObjective + entries.starts[objective() + 1], variable);
    const auto* const rowsOf = columns.rows.data();
    return isInObjective ||
           std::any_of(rowsOf + columns.starts[variable], rowsOf + columns.starts[variable + 1],
                       [this](std::int32_t row) {
                           return rows.types[row] != hostapi::equation_type::free;
                       });
}

}  // namespace norv
