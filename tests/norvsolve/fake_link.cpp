/// A link that solves nothing: it writes down who called it with what, and answers as it is told.
///
/// FAKE_LINK_CALLS    file that receives one line per call
/// FAKE_LINK_FAILS    name of the entry point that fails, or "nothing"
/// FAKE_LINK_STATUS   model status that vexCallSolver reports
/// FAKE_LINK_SOLVE    solve status likewise; 1 without it
/// FAKE_LINK_LEVEL    level that every variable gets
/// FAKE_LINK_HANGS    "yes": vexCallSolver says so in the log, heeds the terminate request with one
///                    more line, and never returns
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "host/exported.hpp"
#include "hostapi/codes.hpp"
#include "hostapi/handles.hpp"

#define HOST_OPERATION(name, form, ...) HOST_OPERATION_##form(name, __VA_ARGS__)
#define DECLARE_TYPED(symbol, ...)        \
    extern "C" {                          \
    using symbol##Function = __VA_ARGS__; \
    extern symbol##Function symbol;       \
    }
#define HOST_OPERATION_plain(name, ...) DECLARE_TYPED(name, __VA_ARGS__)
#define HOST_OPERATION_text(name, ...) DECLARE_TYPED(C##name, __VA_ARGS__)
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
#undef HOST_OPERATION

#define EXPORT extern "C" VEX_EXPORTED

namespace {

struct FakeLink {
    hostapi::ModelHandle model = nullptr;
};

std::string setting(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

/// Writes the call down. @return whether this entry point is to succeed.
bool succeeds(const std::string& entryPoint, const std::string& arguments = {}) {
    std::ofstream(setting("FAKE_LINK_CALLS"), std::ios::app | std::ios::binary)
        << entryPoint << arguments << '\n';
    return setting("FAKE_LINK_FAILS") != entryPoint;
}

[[noreturn]] void hang(hostapi::EnvironmentHandle environment) {
    const auto rest = [] { std::this_thread::sleep_for(std::chrono::milliseconds(5)); };
    CnevLog(environment, "hanging");
    while (nevTerminateGet(environment) == 0) rest();
    CnevLog(environment, "asked to stop");
    while (true) rest();
}

std::string word(double number) {
    return std::string(" ").append(std::to_string(static_cast<std::int64_t>(number)));
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the host's.
EXPORT std::int32_t c__xapiversion(std::int32_t api, char* message, std::int32_t* compatibility) {
    *compatibility = 1;
    std::string("a version of its own").copy(message, 30);
    return succeeds("c__xapiversion", word(api)) ? 1 : 0;
}

EXPORT std::int32_t c__xcheck(const char* name, std::int32_t nbArguments,
                              const std::int32_t* signature, char* message) {
    std::string arguments = std::string(" ").append(name).append(word(nbArguments));
    for (std::int32_t k = 0; k <= nbArguments; ++k) arguments += word(signature[k]);
    std::string("a signature of its own").copy(message, 30);
    return succeeds("c__xcheck", arguments) ? 1 : 0;
}

// NOLINTEND(bugprone-reserved-identifier)

EXPORT void vexInitialize() {
    succeeds("vexInitialize");
}
EXPORT void vexFinalize() {
    succeeds("vexFinalize");
}

EXPORT std::int32_t vexcreate(void** handle, char* message, std::int32_t) {
    *handle = nullptr;
    std::string("no room").copy(message, 30);
    if (!succeeds("vexcreate")) return 0;
    *handle = new FakeLink;  // NOLINT(*-owning-memory): the host holds it between the calls
    return 1;
}

EXPORT std::int32_t vexfree(void** handle) {
    succeeds("vexfree");
    delete static_cast<FakeLink*>(*handle);  // NOLINT(*-owning-memory)
    *handle = nullptr;
    return 1;
}

EXPORT std::int32_t vexReadyAPI(void* handle, hostapi::ModelHandle model,
                                hostapi::OptionHandle options) {
    static_cast<FakeLink*>(handle)->model = model;
    const hostapi::EnvironmentHandle environment = nmoEnvironment(model);
    char optionFile[256] = "";
    CnmoNameOptFile(model, optionFile);
    std::string arguments = options != nullptr ? " options" : " no options";
    arguments += ", file " + std::to_string(nmoOptFile(model)) + ' ' + optionFile + ", preset" +
                 word(nmoModelStat(model)) + ", limits" +
                 word(CnevGetDblOpt(environment, "ResLim")) +
                 word(CnevGetIntOpt(environment, "IterLim")) + word(nevThreads(environment));
    CnevLogStat(environment, "a line for log and status");
    return succeeds("vexReadyAPI", arguments) ? 0 : 1;
}

/// The best point of a search that hangs: FAKE_LINK_LEVEL for all variables.
EXPORT std::int32_t vexGetIncumbent(void*, double* levels, std::int32_t nbLevels) {
    std::fill_n(levels, nbLevels, std::strtod(setting("FAKE_LINK_LEVEL").c_str(), nullptr));
    return 1;
}

EXPORT std::int32_t vexCallSolver(void* handle) {
    if (!succeeds("vexCallSolver")) return 1;
    const hostapi::ModelHandle model = static_cast<FakeLink*>(handle)->model;
    if (setting("FAKE_LINK_HANGS") == "yes") hang(nmoEnvironment(model));
    nmoIndexBaseSet(model, 0);
    const double level = std::strtod(setting("FAKE_LINK_LEVEL").c_str(), nullptr);
    for (std::int32_t j = 0; j < nmoN(model); ++j) nmoSetVarLOne(model, j, level);
    nmoSetHeadnTail(model, hostapi::head_and_tail::iterations, 17);
    nmoCompleteSolution(model);
    nmoModelStatSet(model, std::atoi(setting("FAKE_LINK_STATUS").c_str()));  // NOLINT(cert-err34-c)
    const std::string solve = setting("FAKE_LINK_SOLVE");
    nmoSolveStatSet(model, solve.empty() ? 1 : std::atoi(solve.c_str()));  // NOLINT(cert-err34-c)
    return 0;
}
