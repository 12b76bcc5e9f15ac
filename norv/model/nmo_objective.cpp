// The objective as the link reads it.

#include "model/nmo_operations.hpp"

using hostapi::ModelHandle;
using hostapi::ModelRecord;
using norv::guarded;
using norv::guardedVoid;
using norv::noIndex;
using norv::noValue;

std::int32_t nmoObjNZ(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) {
        return m.instance.entries.nbEntries(m.instance.objective());
    });
}

std::int32_t nmoObjQNZ(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) {
        return m.instance.quadratic.nbEntries(m.instance.objective());
    });
}

double nmoObjConst(ModelHandle nmo) {
    return guarded(__func__, nmo, noValue,
                   [](ModelRecord& m) { return m.instance.objectiveConstant; });
}

double nmoObjJacVal(ModelHandle nmo) {
    // The objective is "function - objective variable = 0" with the variable taken out.
    return guarded(__func__, nmo, noValue, [](ModelRecord&) { return -1.0; });
}

std::int32_t nmoGetObjOrder(ModelHandle nmo) {
    return guarded(__func__, nmo, noIndex,
                   [](ModelRecord& m) { return m.instance.orderOf(m.instance.objective()); });
}

void nmoGetObjStat(ModelHandle nmo, std::int32_t* nbEntries, std::int32_t* nbQuadratic,
                   std::int32_t* nbNonlinear) {
    for (std::int32_t* place : {nbEntries, nbQuadratic, nbNonlinear}) norv::deliver(place, 0);
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        norv::deliverStatistics(m.instance, m.instance.objective(), nbEntries, nbQuadratic,
                                nbNonlinear);
    });
}

void nmoGetObjSparse(ModelHandle nmo, std::int32_t* variables, double* values,
                     std::int32_t* nonlinear, std::int32_t* nbEntries, std::int32_t* nbNonlinear) {
    for (std::int32_t* place : {nbEntries, nbNonlinear}) norv::deliver(place, 0);
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        norv::deliverSparse(m, m.instance.objective(), variables, values, nonlinear, nbEntries,
                            nbNonlinear);
    });
}

void nmoGetObjQ(ModelHandle nmo, std::int32_t* first, std::int32_t* second, double* values) {
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        norv::deliverQuadratic(m, m.instance.objective(), first, second, values);
    });
}

void nmoDirtyGetObjFNLInstr(ModelHandle nmo, std::int32_t* nbInstructions, std::int32_t* opcodes,
                            std::int32_t* fields) {
    norv::deliver(nbInstructions, 0);
    guardedVoid(__func__, nmo, [=](ModelRecord& m) {
        norv::deliverInstructions(m.instance, m.instance.objective(), nbInstructions, opcodes,
                                  fields);
    });
}
