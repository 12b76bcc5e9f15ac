#include "link/ready_api.hpp"

#include <cstdio>
#include <memory>
#include <string>

#include "host/libraries.hpp"
#include "host/operations.hpp"
#include "host/option_names.hpp"
#include "link/build_banner.hpp"
#include "link/option_messages.hpp"
#include "localsolver.hpp"
#include "translate/error_report.hpp"
#include "translate/optimizer_text.hpp"

namespace vex {

namespace {

using localsolver::LocalSolver;
using localsolver::LSErrorCode;
using localsolver::LSException;

constexpr std::int32_t textBufLength = sizeof NorvLocalSolver::textBuf;

bool bindLibraries() {
    char message[256];
    return nmoGetReady(message, sizeof message) != 0 && nevGetReady(message, sizeof message) != 0;
}

void attachHost(NorvLocalSolver& link, ModelHandle model) {
    link.nmo = model;
    link.nev = nmoEnvironment(model);
}

bool confirmLibraries() {
    char message[256];
    if (nmoLibraryLoaded() == 0 && nmoGetReady(message, sizeof message) == 0) {
        std::fprintf(stderr, "Error loading NMO library: %s\n", message);
        return false;
    }
    if (nevLibraryLoaded() == 0 && nevGetReady(message, sizeof message) == 0) {
        std::fprintf(stderr, "Error loading NEV library: %s\n", message);
        return false;
    }
    return true;
}

bool writeBanner(NorvLocalSolver& link) {
    struct Audit {
        AuditHandle handle = nullptr;
        ~Audit() {
            if (handle != nullptr) huxXFree(&handle);
        }
    } audit;
    if (huxXCreate(&audit.handle, link.textBuf, textBufLength) == 0) return false;
    huxSetAuditLine(audit.handle, buildBanner);
    huxGetAuditLine(audit.handle, link.textBuf, textBufLength);
    nevLogStat(link.nev, "");
    nevLogStat(link.nev, link.textBuf);
    nevStatAudit(link.nev, link.textBuf);
    return true;
}

void writeOptimizerInfo(const NorvLocalSolver& link) {
    nevLogStat(link.nev, "");
    nevLogStat(link.nev, fetchText(ls_info).c_str());
}

bool obtainOptions(NorvLocalSolver& link, OptionHandle options) {
    if (optGetReady(link.textBuf, textBufLength) == 0) {
        nevLogStatPChar(link.nev, "*** Can't load option library: ");
        nevLogStat(link.nev, link.textBuf);
        return false;
    }
    if (options != nullptr) {
        link.opt = options;
        link.ownsOptions = false;
        return true;
    }
    OptionHandle created = nullptr;
    if (optCreate(&created, link.textBuf, textBufLength) == 0) {
        nevLogStatPChar(link.nev, "*** ");
        nevLogStatPChar(link.nev, link.textBuf);
        return false;
    }
    link.opt = created;
    link.ownsOptions = true;
    return true;
}

bool readDefinitionFile(NorvLocalSolver& link) {
    nevGetStrOpt(link.nev, host_setting::systemDirectory, link.textBuf);
    const std::string path = std::string(link.textBuf) + optionDefinitionFile;
    const std::int32_t failure = optReadDefinition(link.opt, path.c_str());
    echoMessages(link, MessageChoice::all);
    return failure == 0;
}

void readOptionFile(NorvLocalSolver& link) {
    if (nmoOptFile(link.nmo) <= 0) return;
    nmoNameOptFile(link.nmo, link.textBuf);
    optEchoSet(link.opt, 1);
    // A faulty option file speaks through its messages and does not stop the link.
    optReadParameterFile(link.opt, link.textBuf);
    echoMessages(link, MessageChoice::forTheUser);
    optEchoSet(link.opt, 0);
}

/// The optimizer's error hook: from its C functions back to exceptions.
void errorHook(int code, const char* explanation, const char* fileName, const char* functionName,
               int line, void* /*userData*/) {
    const auto text = [](const char* s) { return s != nullptr ? s : ""; };
    throw LSException(static_cast<LSErrorCode>(code), text(fileName), line, text(functionName),
                      text(explanation));
}

/// Gives `link` a silent LocalSolver instance with an empty model, in place of an earlier one.
void renewSolver(NorvLocalSolver& link) {
    link.resetTranslation();
    link.solver.reset();
    ls_set_exception_callback(&errorHook, nullptr);
    const auto deleteSolver = [](ls_solver* solver) { ls_delete_solver(solver); };
    std::unique_ptr<ls_solver, decltype(deleteSolver)> created(ls_create_solver(), deleteSolver);
    link.solver = std::make_unique<LocalSolver>(created.get(), /*isOwner=*/true);
    static_cast<void>(created.release());  // the object just made owns it now
    link.solver->setVerbosity(0);
}

/// @return whether setup came to its end without nesting too deep.
bool setUpWithinDepth(NorvLocalSolver& link) {
    try {
        link.setupModel();
        return true;
    } catch (const RecursionDepthLimitReached&) {
        return false;
    }
}

/// Builds the model; when definitions nest too deep, once more without automatic aggregation.
void setUpModel(NorvLocalSolver& link) {
    if (setUpWithinDepth(link)) return;
    nevLogStatPChar(link.nev, "Recursion depth limit reached during model setup.\n");
    if (optGetIntStr(link.opt, option::aggrvars) != 0) {
        nevLogStatPChar(link.nev, "Disabling aggregation of variables.\n");
        optSetIntStr(link.opt, option::aggrvars, 0);
        renewSolver(link);
        if (setUpWithinDepth(link)) return;
    }
    nevLogStatPChar(link.nev, "Consider not using option 'defvar'.\n");
    setStatuses(link, model_status::noSolutionReturned, solve_status::capabilityProblem);
}

std::int32_t buildModel(NorvLocalSolver& link) {
    try {
        renewSolver(link);
        setUpModel(link);
        return 0;
    } catch (const LSException& error) {
        return reportError(link, error);
    }
}

}  // namespace

std::int32_t readyAPI(NorvLocalSolver& link, ModelHandle model, OptionHandle options) {
    if (!bindLibraries()) return 1;
    attachHost(link, model);
    if (!confirmLibraries()) return 1;
    if (!writeBanner(link)) return 1;
    writeOptimizerInfo(link);
    if (link.opt == nullptr) {
        if (!obtainOptions(link, options)) return 1;
        if (!readDefinitionFile(link)) return 1;
    }
    optEOLOnlySet(link.opt, 1);
    readOptionFile(link);
    return buildModel(link);
}

}  // namespace vex
