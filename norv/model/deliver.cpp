// The parts of a row function, the same for rows and for the objective.

#include <algorithm>

#include "model/nmo_operations.hpp"

namespace norv {

namespace {

std::int32_t nbNonlinearEntries(const SparseRows& entries, std::int32_t row) noexcept {
    std::int32_t nbNonlinear = 0;
    for (std::int64_t k = entries.starts[row]; k < entries.starts[row + 1]; ++k)
        nbNonlinear += entries.isNonlinear(k) ? 1 : 0;
    return nbNonlinear;
}

}  // namespace

void deliverStatistics(const Instance& instance, std::int32_t row, std::int32_t* nbEntries,
                       std::int32_t* nbQuadratic, std::int32_t* nbNonlinear) noexcept {
    deliver(nbEntries, instance.entries.nbEntries(row));
    deliver(nbQuadratic, instance.quadratic.nbEntries(row));
    deliver(nbNonlinear, nbNonlinearEntries(instance.entries, row));
}

void deliverSparse(const hostapi::ModelRecord& model, std::int32_t row, std::int32_t* variables,
                   double* values, std::int32_t* nonlinear, std::int32_t* nbEntries,
                   std::int32_t* nbNonlinear) noexcept {
    const SparseRows& entries = model.instance.entries;
    const std::int64_t begin = entries.starts[row];
    const std::int64_t end = entries.starts[row + 1];
    std::int32_t nbFlagged = 0;
    for (std::int64_t k = begin; k < end; ++k) {
        const std::int32_t flag = entries.isNonlinear(k) ? 1 : 0;
        nbFlagged += flag;
        if (variables != nullptr)
            variables[k - begin] = entries.variables[k] + model.view.indexBase;
        if (values != nullptr) values[k - begin] = entries.values[k];
        if (nonlinear != nullptr) nonlinear[k - begin] = flag;
    }
    deliver(nbEntries, static_cast<std::int32_t>(end - begin));
    deliver(nbNonlinear, nbFlagged);
}

void deliverQuadratic(const hostapi::ModelRecord& model, std::int32_t row, std::int32_t* first,
                      std::int32_t* second, double* values) noexcept {
    const QuadraticRows& quadratic = model.instance.quadratic;
    const std::int64_t begin = quadratic.starts[row];
    for (std::int64_t k = begin; k < quadratic.starts[row + 1]; ++k) {
        const bool isDiagonal = quadratic.first[k] == quadratic.second[k];
        if (first != nullptr) first[k - begin] = quadratic.first[k] + model.view.indexBase;
        if (second != nullptr) second[k - begin] = quadratic.second[k] + model.view.indexBase;
        if (values != nullptr)
            values[k - begin] = isDiagonal ? 2.0 * quadratic.values[k] : quadratic.values[k];
    }
}

void deliverInstructions(const Instance& instance, std::int32_t row, std::int32_t* nbInstructions,
                         std::int32_t* opcodes, std::int32_t* fields) noexcept {
    const InstructionList* list = instance.listOf(row);
    deliver(nbInstructions, list == nullptr ? 0 : static_cast<std::int32_t>(list->opcodes.size()));
    if (list == nullptr) return;
    if (opcodes != nullptr) std::copy(list->opcodes.begin(), list->opcodes.end(), opcodes);
    if (fields != nullptr) std::copy(list->fields.begin(), list->fields.end(), fields);
}

}  // namespace norv
