// Rows as the link reads them.

#include <span>

#include "model/nmo_operations.hpp"

using hostapi::ModelHandle;
using hostapi::ModelRecord;
using norv::guarded;
using norv::guardedVoid;
using norv::noIndex;
using norv::noValue;

std::int32_t nmoGetEquTypeOne(ModelHandle nmo, std::int32_t row) {
    return guarded(__func__, nmo, noIndex,
                   [row](ModelRecord& m) { return m.instance.rows.types[m.rowAt(row)]; });
}

double nmoGetRhsOne(ModelHandle nmo, std::int32_t row) {
    return guarded(__func__, nmo, noValue,
                   [row](ModelRecord& m) { return m.instance.rows.rightHandSides[m.rowAt(row)]; });
}

std::int32_t nmoGetEquOrderOne(ModelHandle nmo, std::int32_t row) {
    return guarded(__func__, nmo, noIndex,
                   [row](ModelRecord& m) { return m.instance.orderOf(m.rowAt(row)); });
}

char* CnmoGetEquNameOne(ModelHandle nmo, std::int32_t row, char* name) {
    norv::writeText(name, "");
    return guarded(__func__, nmo, name, [row, name](ModelRecord& m) {
        return norv::writeText(name, m.instance.rowNames.nameOf(m.rowAt(row)));
    });
}

void nmoGetRowStat(ModelHandle nmo, std::int32_t row, std::int32_t* nbEntries,
                   std::int32_t* nbQuadratic, std::int32_t* nbNonlinear) {
    for (std::int32_t* place : {nbEntries, nbQuadratic, nbNonlinear}) norv::deliver(place, 0);
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        norv::deliverStatistics(m.instance, m.rowAt(row), nbEntries, nbQuadratic, nbNonlinear);
    });
}

void nmoGetRowSparse(ModelHandle nmo, std::int32_t row, std::int32_t* variables, double* values,
                     std::int32_t* nonlinear, std::int32_t* nbEntries, std::int32_t* nbNonlinear) {
    for (std::int32_t* place : {nbEntries, nbNonlinear}) norv::deliver(place, 0);
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        norv::deliverSparse(m, m.rowAt(row), variables, values, nonlinear, nbEntries, nbNonlinear);
    });
}

std::int32_t nmoGetRowQNZOne(ModelHandle nmo, std::int32_t row) {
    return guarded(__func__, nmo, 0,
                   [row](ModelRecord& m) { return m.instance.quadratic.nbEntries(m.rowAt(row)); });
}

void nmoGetRowQ(ModelHandle nmo, std::int32_t row, std::int32_t* first, std::int32_t* second,
                double* values) {
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        norv::deliverQuadratic(m, m.rowAt(row), first, second, values);
    });
}

void nmoGetRowJacInfoOne(ModelHandle nmo, std::int32_t row, void** cursor, double* value,
                         std::int32_t* variable, std::int32_t* nonlinear) {
    norv::deliver(variable, noIndex);
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        if (cursor == nullptr) throw std::invalid_argument("a walk needs a cursor");
        auto& entries = m.instance.entries;
        const std::int32_t i = m.rowAt(row);
        // The cursor is the address of the entry's variable: nothing to free on an early stop.
        const auto* place = static_cast<std::int32_t*>(*cursor);
        const std::int64_t k =
            place == nullptr ? entries.starts[i] : place - entries.variables.data();
        *cursor = nullptr;
        if (k >= entries.starts[i + 1]) return;
        norv::deliver(variable, entries.variables[k] + m.view.indexBase);
        norv::deliver(value, entries.values[k]);
        norv::deliver(nonlinear, std::int32_t{entries.occurrences[k] != norv::linearOnly});
        if (k + 1 < entries.starts[i + 1]) *cursor = &entries.variables[k + 1];
    });
}

void nmoDirtyGetRowFNLInstr(ModelHandle nmo, std::int32_t row, std::int32_t* nbInstructions,
                            std::int32_t* opcodes, std::int32_t* fields) {
    norv::deliver(nbInstructions, 0);
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        norv::deliverInstructions(m.instance, m.rowAt(row), nbInstructions, opcodes, fields);
    });
}

const double* nmoPPool(ModelHandle nmo) {
    const double* none = nullptr;
    return guarded(__func__, nmo, none, [](ModelRecord& m) { return m.instance.pool.data(); });
}

std::int32_t nmoEvalFunc(ModelHandle nmo, std::int32_t row, const double* point, double* value,
                         std::int32_t* nbErrors) {
    norv::deliver(nbErrors, 1);
    norv::deliver(value, noValue);
    return guarded(__func__, nmo, 1, [=](ModelRecord& m) {
        const std::int32_t i = m.rowAt(row);
        if (point == nullptr) throw std::invalid_argument("an evaluation needs a point");
        const std::span<const double> all(point,
                                          static_cast<std::size_t>(m.instance.nbVariables()));
        const norv::Evaluation result = m.instance.evaluate(i, all);
        norv::deliver(value, result.value);
        norv::deliver(nbErrors, result.nbErrors);
        return result.nbErrors == 0 ? 0 : 1;
    });
}
