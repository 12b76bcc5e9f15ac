#include "solve/diagnostic_files.hpp"

#include <fstream>

#include "diag/model_dump.hpp"
#include "host/operations.hpp"
#include "host/option_names.hpp"

namespace vex {

bool dumpModelOnRequest(const NorvLocalSolver& link) {
    if (optGetDefinedStr(link.opt, option::dumpmodel) == 0) return true;
    char fileName[longestText + 1] = {};
    if (optGetStrStr(link.opt, option::dumpmodel, fileName) == nullptr) {
        nevLogStat(link.nev, "Error reading dumpmodel option value.");
        return false;
    }
    std::ofstream file(fileName);
    if (!file) {
        nevLogStat(link.nev, "Could not create dumpmodel file.");
        return false;
    }
    nevLog(link.nev, "Dumping model to file.");
    dumpModel(file, link.solver->getModel());
    return true;
}

bool saveEnvironmentOnRequest(const NorvLocalSolver& link) {
    if (optGetDefinedStr(link.opt, option::writelsp) == 0) return true;
    char fileName[longestText + 1] = {};
    if (optGetStrStr(link.opt, option::writelsp, fileName) == nullptr) {
        nevLogStat(link.nev, "Error reading writelsp option value.");
        return false;
    }
    nevLog(link.nev, "Writing LocalSolver environment to file.");
    link.solver->saveEnvironment(fileName);
    return true;
}

}  // namespace vex
