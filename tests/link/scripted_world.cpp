#include "link/scripted_world.hpp"

#include <cstring>
#include <map>

#include "host/host_interfaces.hpp"
#include "host/operations.hpp"
#include "localsolver.h"
#include "solve/solve_driver.hpp"
#include "translate/nlocalsolver.hpp"

namespace vex::test {

World world;

namespace {

char anObject = 0;  // stands for every object of the host

void record(const char* name, const std::string& arguments = {}) {
    world.calls.push_back(arguments.empty() ? name : std::string(name) + ": " + arguments);
}

template <class Handle>
Handle handleOf(void* object) {
    return static_cast<Handle>(object);
}

template <class Function>
AnyFunction any(Function* function) {
    return reinterpret_cast<AnyFunction>(function);
}

/// `function` behind `slot`'s type: a script that does not fit the operation does not compile.
template <class Function>
AnyFunction as(const Slot<Function>&, std::type_identity_t<Function>* function) {
    return any(function);
}

std::int32_t checkEntry(const char* name, std::int32_t nbArguments, const std::int32_t* signature,
                        char* message);

std::int32_t createAudit(void** handle) {
    if (world.auditObject) *handle = &anObject;
    return world.auditObject ? 1 : 0;
}
std::int32_t createOptions(void** handle) {
    record("XCreate");
    if (world.optionObject) *handle = &anObject;
    return world.optionObject ? 1 : 0;
}
void freeAudit(void** handle) {
    record("huxXFree");
    *handle = nullptr;
}
void freeOptions(void** handle) {
    record("XFree");
    *handle = nullptr;
}
std::int32_t acceptVersion(std::int32_t, char*, std::int32_t*) {
    return 1;
}

const std::map<std::string, AnyFunction>& symbols() {
    static const std::map<std::string, AnyFunction> table = {
        {"nmoXCreate", any(createAudit)},
        {"CnmoXCreateD", any(createAudit)},
        {"nmoXFree", any(freeAudit)},
        {"nevXCreate", any(createAudit)},
        {"CnevXCreateD", any(createAudit)},
        {"nevXFree", any(freeAudit)},
        {"huxXCreate", any(createAudit)},
        {"huxXFree", any(freeAudit)},
        {"XCreate", any(createOptions)},
        {"XFree", any(freeOptions)},
        {"CnmoXCheck", any(checkEntry)},
        {"CnevXCheck", any(checkEntry)},
        {"ChuxXCheck", any(checkEntry)},
        {"CXCheck", any(checkEntry)},
        {"CnmoXAPIVersion", any(acceptVersion)},
        {"CnevXAPIVersion", any(acceptVersion)},
        {"ChuxXAPIVersion", any(acceptVersion)},
        {"CXAPIVersion", any(acceptVersion)},
        {"nmoEnvironment",
         as(nmoEnvironment, [](ModelHandle) { return handleOf<EnvironmentHandle>(&anObject); })},
        {"nmoOptFile", as(nmoOptFile, [](ModelHandle) { return world.optionFile; })},
        {"CnmoNameOptFile",
         as(nmoNameOptFile,
            [](ModelHandle, char* name) { return std::strcpy(name, "localsolver.opt"); })},
        {"nmoModelStatSet",
         as(nmoModelStatSet,
            [](ModelHandle, std::int32_t s) { record("nmoModelStatSet", std::to_string(s)); })},
        {"nmoSolveStatSet",
         as(nmoSolveStatSet,
            [](ModelHandle, std::int32_t s) { record("nmoSolveStatSet", std::to_string(s)); })},
        {"CnevLogStat",
         as(nevLogStat,
            [](EnvironmentHandle, const char* s) { record("nevLogStat", std::string(s)); })},
        {"nevLogStatPChar",
         as(nevLogStatPChar,
            [](EnvironmentHandle, const char* s) { record("nevLogStatPChar", std::string(s)); })},
        {"CnevStatAudit",
         as(nevStatAudit, [](EnvironmentHandle, const char* s) { record("nevStatAudit", s); })},
        {"nevStatCon", as(nevStatCon, [](EnvironmentHandle) { record("nevStatCon"); })},
        {"nevStatCoff", as(nevStatCoff, [](EnvironmentHandle) { record("nevStatCoff"); })},
        {"CnevGetStrOpt", as(nevGetStrOpt,
                             [](EnvironmentHandle, const char* name, char* value) {
                                 record("nevGetStrOpt", name);
                                 return std::strcpy(value, world.systemDirectory.c_str());
                             })},
        {"ChuxSetAuditLine", as(huxSetAuditLine, [](AuditHandle, const char*) {})},
        {"ChuxGetAuditLine",
         as(huxGetAuditLine,
            [](AuditHandle, char* line, std::int32_t) { return std::strcpy(line, "audit line"); })},
        {"CoptReadDefinition", as(optReadDefinition,
                                  [](OptionHandle, const char* path) {
                                      record("optReadDefinition", path);
                                      world.pending = world.definitionMessages;
                                      return world.definitionFailure;
                                  })},
        {"CoptReadParameterFile", as(optReadParameterFile,
                                     [](OptionHandle, const char* path) -> std::int32_t {
                                         record("optReadParameterFile", path);
                                         world.pending = world.optionFileMessages;
                                         return 1;
                                     })},
        {"optEOLOnlySet",
         as(optEOLOnlySet,
            [](OptionHandle, std::int32_t f) { record("optEOLOnlySet", std::to_string(f)); })},
        {"optEchoSet",
         as(optEchoSet,
            [](OptionHandle, std::int32_t f) { record("optEchoSet", std::to_string(f)); })},
        {"optMessageCount",
         as(optMessageCount,
            [](OptionHandle) { return static_cast<std::int32_t>(world.pending.size()); })},
        {"CoptGetMessage", as(optGetMessage,
                              [](OptionHandle, std::int32_t k, char* text, std::int32_t* type) {
                                  const auto& [messageType, message] =
                                      world.pending.at(static_cast<std::size_t>(k - 1));
                                  std::strcpy(text, message.c_str());
                                  *type = messageType;
                              })},
        {"optClearMessages", as(optClearMessages,
                                [](OptionHandle) {
                                    record("optClearMessages");
                                    world.pending.clear();
                                })},
        {"CoptGetIntStr",
         as(optGetIntStr, [](OptionHandle, const char*) { return world.aggrvars; })},
        {"CoptSetIntStr", as(optSetIntStr,
                             [](OptionHandle, const char* name, std::int32_t value) {
                                 record("optSetIntStr", name + (" " + std::to_string(value)));
                                 world.aggrvars = value;
                             })},
    };
    return table;
}

std::int32_t checkEntry(const char* name, std::int32_t, const std::int32_t*, char* message) {
    message[0] = '\0';
    return symbols().count(name) + symbols().count(std::string("C") + name) > 0 ? 1 : 0;
}

void bind(Binding& binding) {
    const LibraryLoading loading = {
        [](const std::string&, std::string&) -> LibraryHandle { return &anObject; },
        [](LibraryHandle, const std::string& symbol) {
            const auto found = symbols().find(symbol);
            return found != symbols().end() ? found->second : nullptr;
        }};
    char message[256];
    if (!binding.ensureLoaded({message, sizeof message}, loading)) throw message;
}

}  // namespace

void bindHub() {
    bind(nmoBinding);
    bind(nevBinding);
    bind(huxBinding);
}

void bindOptions() {
    bind(optBinding);
}

}  // namespace vex::test

// The link's inner parts.

namespace vex {

using test::world;

void NorvLocalSolver::callback(localsolver::LocalSolver&, localsolver::LSCallbackType) {}
NorvLocalSolver::~NorvLocalSolver() {
    solver.reset();
    if (ownsOptions) optBinding.destroy(reinterpret_cast<void**>(&opt));
}
void NorvLocalSolver::resetTranslation() {
    test::record("resetTranslation");
}
void NorvLocalSolver::setupModel() {
    test::record("setupModel");
    if (world.nbSetups < world.setups.size()) world.setups[world.nbSetups++]();
}
std::int32_t runSolveDriver(NorvLocalSolver&) {
    return world.drive();
}

}  // namespace vex

// The optimizer.

int ls_info(char* text, int length) {
    const char info[] = "engine";
    if (text != nullptr) std::memcpy(text, info, static_cast<std::size_t>(length));
    return sizeof info;
}
void ls_set_exception_callback(ls_exception_callback hook, void*) {
    vex::test::record(hook != nullptr ? "hook" : "no hook");
    vex::test::world.hook = hook;
}
ls_solver* ls_create_solver() {
    vex::test::record("ls_create_solver");
    if (!vex::test::world.creationError.empty()) {
        vex::test::world.hook(LS_ERROR_MEMORY, vex::test::world.creationError.c_str(), "file",
                              "function", 1, nullptr);
    }
    return reinterpret_cast<ls_solver*>(&vex::test::anObject);
}
void ls_delete_solver(ls_solver*) {
    vex::test::record("ls_delete_solver");
}
void ls_set_verbosity(ls_solver*, int level) {
    vex::test::record("ls_set_verbosity", std::to_string(level));
}
