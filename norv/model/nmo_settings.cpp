// Sizes and settings of the model object, and the library entries of the interface.

#include <algorithm>
#include <limits>
#include <stdexcept>

#include "interface/library_object.hpp"
#include "model/nmo_operations.hpp"

using hostapi::ModelHandle;
using hostapi::ModelRecord;
using norv::guarded;
using norv::guardedVoid;

namespace {

#define NORV_DESCRIBE_OPERATIONS
#include "interface/declare_operations.hpp"
constexpr norv::Operation operations[] = {
#include "hostapi/nmo_operations.inc"
};
constexpr norv::Interface served = {"hubdclib64", "nmo", hostapi::interface_version::nmo,
                                    operations};

/// Stands for "no such index", whatever the index base.
constexpr std::int32_t notAvailable = std::numeric_limits<std::int32_t>::max();

}  // namespace

NORV_LIBRARY_ENTRIES(nmoXCreate, nmoXFree, CnmoXCheck, CnmoXAPIVersion, ModelRecord, served)
NORV_CREATE_IN_DIRECTORY(CnmoXCreateD, ModelRecord)

std::int32_t nmoM(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) { return m.nbVisibleRows(); });
}

std::int32_t nmoN(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) { return m.instance.nbVariables(); });
}

std::int32_t nmoNDisc(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) { return m.instance.nbDiscrete(); });
}

std::int32_t nmoModelType(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) { return m.instance.modelType; });
}

std::int32_t nmoSense(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) { return m.instance.sense; });
}

void nmoIndexBaseSet(ModelHandle nmo, std::int32_t base) {
    guardedVoid(__func__, nmo, [base](ModelRecord& m) {
        if (base != 0 && base != 1) throw std::invalid_argument("the index base is 0 or 1");
        m.view.indexBase = base;
    });
}

void nmoObjStyleSet(ModelHandle nmo, std::int32_t style) {
    guardedVoid(__func__, nmo, [style](ModelRecord& m) { m.view.objectiveStyle = style; });
}

std::int32_t nmoObjStyle(ModelHandle nmo) {
    return guarded(__func__, nmo, norv::noIndex,
                   [](ModelRecord& m) { return m.view.objectiveStyle; });
}

void nmoObjReformSet(ModelHandle nmo, std::int32_t flag) {
    // Nothing follows from it: an instance of this host never has an objective variable.
    guardedVoid(__func__, nmo, [flag](ModelRecord& m) { m.view.reformulatesObjective = flag; });
}

std::int32_t nmoGetEquTypeCnt(ModelHandle nmo, std::int32_t equationType) {
    return guarded(__func__, nmo, 0, [equationType](ModelRecord& m) {
        if (equationType == hostapi::equation_type::free && m.view.nbRowsHidden > 0) return 0;
        const auto& types = m.instance.rows.types;
        return static_cast<std::int32_t>(std::count(types.begin(), types.end(), equationType));
    });
}

void nmoSetNRowPerm(ModelHandle nmo) {
    guardedVoid(__func__, nmo, [](ModelRecord& m) { m.hideFreeRows(); });
}

std::int32_t nmoUseQ(ModelHandle nmo) {
    return guarded(__func__, nmo, 0,
                   [](ModelRecord& m) { return m.instance.quadratic.values.empty() ? 0 : 1; });
}

std::int32_t nmoMaxQNZ(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) {
        std::int32_t largest = 0;
        for (std::int32_t i = 0; i <= m.instance.objective(); ++i)
            largest = std::max(largest, m.instance.quadratic.nbEntries(i));
        return largest;
    });
}

std::int32_t nmoNLCodeSizeMaxRow(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) { return m.instance.sizeOfLargestList; });
}

hostapi::DictionaryHandle nmoDict(ModelHandle nmo) {
    return guarded(__func__, nmo, hostapi::DictionaryHandle{}, [](ModelRecord& m) {
        // Only a token: names are asked from the model object.
        return m.instance.hasNames
                   ? reinterpret_cast<hostapi::DictionaryHandle>(&m.instance.variableNames)
                   : nullptr;
    });
}

hostapi::EnvironmentHandle nmoEnvironment(ModelHandle nmo) {
    return guarded(__func__, nmo, hostapi::EnvironmentHandle{},
                   [](ModelRecord& m) { return m.environment; });
}

std::int32_t nmoOptFile(ModelHandle nmo) {
    return guarded(__func__, nmo, 0, [](ModelRecord& m) { return m.optionFileNumber; });
}

char* CnmoNameOptFile(ModelHandle nmo, char* name) {
    norv::writeText(name, "");
    return guarded(__func__, nmo, name,
                   [name](ModelRecord& m) { return norv::writeText(name, m.optionFile); });
}

double nmoPinf(ModelHandle /*nmo*/) {
    return std::numeric_limits<double>::infinity();
}

double nmoMinf(ModelHandle /*nmo*/) {
    return -std::numeric_limits<double>::infinity();
}

std::int32_t nmoValNAInt(ModelHandle /*nmo*/) {
    return notAvailable;
}

std::int32_t nmoObjVar(ModelHandle nmo) {
    return nmoValNAInt(nmo);
}
