// The environment's operations as the link calls them, and the library entries of the interface.

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "environment/environment_record.hpp"
#include "hostapi/codes.hpp"
#include "hostapi/handles.hpp"
#include "interface/guarded.hpp"
#include "interface/library_object.hpp"
#include "interface/names.hpp"
#include "interface/text_result.hpp"
#include "norv/export.hpp"

#define NORV_DECLARE_OPERATIONS
#include "interface/declare_operations.hpp"
// The table comes last: it uses the macro.
#include "hostapi/nev_operations.inc"

using hostapi::EnvironmentHandle;
using hostapi::EnvironmentRecord;
using norv::guarded;
using norv::guardedVoid;

namespace {

#define NORV_DESCRIBE_OPERATIONS
#include "interface/declare_operations.hpp"
constexpr norv::Operation operations[] = {
#include "hostapi/nev_operations.inc"
};
constexpr norv::Interface served = {"hubdclib64", "nev", hostapi::interface_version::nev,
                                    operations};

std::string orEmpty(const char* text) {
    return text == nullptr ? std::string() : text;
}

}  // namespace

void CnevLogStat(EnvironmentHandle nev, const char* line) {
    guardedVoid(__func__, nev,
                [line](EnvironmentRecord& e) { norv::writeLogAndStatus(e, orEmpty(line) + '\n'); });
}

void nevLogStatPChar(EnvironmentHandle nev, const char* text) {
    guardedVoid(__func__, nev,
                [text](EnvironmentRecord& e) { norv::writeLogAndStatus(e, orEmpty(text)); });
}

void CnevLog(EnvironmentHandle nev, const char* line) {
    guardedVoid(__func__, nev,
                [line](EnvironmentRecord& e) { norv::writeLog(e, orEmpty(line) + '\n'); });
}

void nevLogPChar(EnvironmentHandle nev, const char* text) {
    guardedVoid(__func__, nev, [text](EnvironmentRecord& e) { norv::writeLog(e, orEmpty(text)); });
}

void CnevStatAudit(EnvironmentHandle nev, const char* line) {
    guardedVoid(__func__, nev,
                [line](EnvironmentRecord& e) { norv::writeStatus(e, orEmpty(line) + '\n'); });
}

void nevStatCon(EnvironmentHandle nev) {
    guardedVoid(__func__, nev, [](EnvironmentRecord& e) { e.echoesLog = true; });
}

void nevStatCoff(EnvironmentHandle nev) {
    guardedVoid(__func__, nev, [](EnvironmentRecord& e) { e.echoesLog = false; });
}

char* CnevGetStrOpt(EnvironmentHandle nev, const char* name, char* value) {
    norv::writeText(value, "");
    return guarded(__func__, nev, value, [name, value](EnvironmentRecord& e) {
        if (!norv::sameName(orEmpty(name), hostapi::host_setting::systemDirectory))
            throw std::invalid_argument("there is no text setting \"" + orEmpty(name) + "\"");
        return norv::writeText(value, e.systemDirectory);
    });
}

double CnevGetDblOpt(EnvironmentHandle nev, const char* name) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    return guarded(__func__, nev, none, [name](EnvironmentRecord& e) {
        if (!norv::sameName(orEmpty(name), hostapi::host_setting::timeLimit))
            throw std::invalid_argument("there is no real setting \"" + orEmpty(name) + "\"");
        return e.timeLimit;
    });
}

std::int32_t CnevGetIntOpt(EnvironmentHandle nev, const char* name) {
    return guarded(__func__, nev, -1, [name](EnvironmentRecord& e) {
        if (!norv::sameName(orEmpty(name), hostapi::host_setting::iterationLimit))
            throw std::invalid_argument("there is no integer setting \"" + orEmpty(name) + "\"");
        return e.iterationLimit;
    });
}

std::int32_t nevThreads(EnvironmentHandle nev) {
    return guarded(__func__, nev, 1, [](EnvironmentRecord& e) { return e.nbThreads; });
}

std::int32_t nevTerminateGet(EnvironmentHandle nev) {
    return guarded(__func__, nev, 0, [](EnvironmentRecord& e) {
        if (e.pollHook) e.pollHook();
        return e.terminationRequested.load(std::memory_order_relaxed) ? 1 : 0;
    });
}

NORV_LIBRARY_ENTRIES(nevXCreate, nevXFree, CnevXCheck, CnevXAPIVersion, EnvironmentRecord, served)
NORV_CREATE_IN_DIRECTORY(CnevXCreateD, EnvironmentRecord)
