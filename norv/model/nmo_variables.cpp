// Variables as the link reads them.

#include <algorithm>

#include "model/nmo_operations.hpp"

using hostapi::ModelHandle;
using hostapi::ModelRecord;
using norv::guarded;
using norv::guardedVoid;
using norv::noIndex;
using norv::noValue;

namespace {

/// The first position from `k` on, before `end`, whose row the link can see; `end` if none.
std::int64_t nextVisible(const ModelRecord& model, std::int64_t k, std::int64_t end) {
    const auto& rows = model.instance.columns.rows;
    if (model.view.nbRowsHidden == 0) return k;
    while (k < end && model.view.positionOf[rows[k]] >= model.nbVisibleRows()) ++k;
    return k;
}

}  // namespace

std::int32_t nmoGetVarTypeOne(ModelHandle nmo, std::int32_t variable) {
    return guarded(__func__, nmo, noIndex, [variable](ModelRecord& m) {
        return m.instance.typeForLink(m.variableAt(variable));
    });
}

double nmoGetVarLowerOne(ModelHandle nmo, std::int32_t variable) {
    return guarded(__func__, nmo, noValue, [variable](ModelRecord& m) {
        return m.instance.variables.lower[m.variableAt(variable)];
    });
}

double nmoGetVarUpperOne(ModelHandle nmo, std::int32_t variable) {
    return guarded(__func__, nmo, noValue, [variable](ModelRecord& m) {
        return m.instance.variables.upper[m.variableAt(variable)];
    });
}

double nmoGetVarLOne(ModelHandle nmo, std::int32_t variable) {
    return guarded(__func__, nmo, noValue, [variable](ModelRecord& m) {
        return m.solution.levels[m.variableAt(variable)];
    });
}

void nmoGetVarL(ModelHandle nmo, double* levels) {
    guardedVoid(__func__, nmo, [levels](ModelRecord& m) {
        if (levels == nullptr) return;
        std::copy(m.solution.levels.begin(), m.solution.levels.end(), levels);
    });
}

char* CnmoGetVarNameOne(ModelHandle nmo, std::int32_t variable, char* name) {
    norv::writeText(name, "");
    return guarded(__func__, nmo, name, [variable, name](ModelRecord& m) {
        return norv::writeText(name, m.instance.variableNames.nameOf(m.variableAt(variable)));
    });
}

void nmoGetColJacInfoOne(ModelHandle nmo, std::int32_t variable, void** cursor, double* value,
                         std::int32_t* row, std::int32_t* nonlinear) {
    norv::deliver(row, noIndex);
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        if (cursor == nullptr) throw std::invalid_argument("a walk needs a cursor");
        auto& columns = m.instance.columns;
        const std::int32_t j = m.variableAt(variable);
        const std::int64_t end = columns.starts[j + 1];
        // The cursor is the address of the entry's row index: nothing to free on an early stop.
        const auto* place = static_cast<std::int32_t*>(*cursor);
        const std::int64_t k =
            place == nullptr ? nextVisible(m, columns.starts[j], end) : place - columns.rows.data();
        *cursor = nullptr;
        if (k >= end) return;
        norv::deliver(row, m.indexOfRow(columns.rows[k]));
        norv::deliver(value, m.instance.entries.values[columns.positions[k]]);
        norv::deliver(
            nonlinear,
            std::int32_t{m.instance.entries.occurrences[columns.positions[k]] != norv::linearOnly});
        const std::int64_t next = nextVisible(m, k + 1, end);
        if (next < end) *cursor = &columns.rows[next];
    });
}

std::int32_t nmoGetjSolver(ModelHandle nmo, std::int32_t hostVariable) {
    // Variables are never reordered, so both sides know them under the same index.
    return guarded(__func__, nmo, noIndex, [hostVariable](ModelRecord& m) {
        return m.variableAt(hostVariable) + m.view.indexBase;
    });
}
