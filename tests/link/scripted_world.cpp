#include "link/scripted_world.hpp"

#include <cstring>
#include <set>
#include <stdexcept>
#include <type_traits>

#include "host/host_interfaces.hpp"
#include "host/operations.hpp"
#include "localsolver.h"
#include "solve/solve_driver.hpp"
#include "translate/nlocalsolver.hpp"

namespace vex::test {

World world;

namespace {

char anObject = 0;  // stands for every object of the host

/// Questions, which change nothing, are not recorded.
const std::set<std::string> questions = {"nmoEnvironment",  "nmoOptFile",      "nmoNameOptFile",
                                         "huxSetAuditLine", "huxGetAuditLine", "optMessageCount",
                                         "optGetMessage",   "optGetIntStr"};

template <class Argument>
void appendArgument(std::string& line, Argument argument) {
    if constexpr (std::is_same_v<Argument, const char*>) {
        line += std::string(line.back() == ':' ? " " : ", ") + argument;
    } else if constexpr (std::is_same_v<Argument, std::int32_t>) {
        line += (line.back() == ':' ? " " : ", ") + std::to_string(argument);
    }
}

template <class Argument>
void fillText(const std::string& name, [[maybe_unused]] Argument argument) {
    if constexpr (std::is_same_v<Argument, char*>) {
        const std::string& text = world.texts[name];
        std::memcpy(argument, text.c_str(), text.size() + 1);
    }
}

/// The scripted form of an operation, from its name and type.
template <class Traits, class Function = typename Traits::Function>
struct Script;

template <class Traits, class Result, class Object, class... Arguments>
struct Script<Traits, Result(Object, Arguments...)> {
    static Result call(Object, Arguments... arguments) {
        const std::string name = Traits::name;
        std::string line = name + ":";
        (appendArgument(line, arguments), ...);
        if (questions.count(name) == 0) world.calls.push_back(line);
        if (world.messages.count(name) != 0) world.pending = world.messages[name];
        (fillText(name, arguments), ...);
        if constexpr (std::is_same_v<Result, EnvironmentHandle>) {
            return reinterpret_cast<EnvironmentHandle>(&anObject);
        } else if constexpr (std::is_same_v<Result, std::int32_t>) {
            return world.numbers[name];
        } else {
            return Result();
        }
    }
};

template <class Function>
AnyFunction any(Function* function) {
    return reinterpret_cast<AnyFunction>(function);
}

std::int32_t messageCount(OptionHandle) {
    return static_cast<std::int32_t>(world.pending.size());
}

void getMessage(OptionHandle, std::int32_t message, char* text, std::int32_t* type) {
    const auto& [pendingType, pending] = world.pending.at(static_cast<std::size_t>(message - 1));
    std::memcpy(text, pending.c_str(), pending.size() + 1);
    *type = pendingType;
}

std::int32_t createAudit(void** handle) {
    if (world.auditObject) *handle = &anObject;
    return world.auditObject ? 1 : 0;
}
std::int32_t createOptions(void** handle) {
    world.calls.emplace_back("XCreate");
    if (world.optionObject) *handle = &anObject;
    return world.optionObject ? 1 : 0;
}
void freeAudit(void**) {
    world.calls.emplace_back("huxXFree");
}
void freeOptions(void**) {
    world.calls.emplace_back("XFree");
}
std::int32_t acceptName(const char*, std::int32_t, const std::int32_t*, char*) {
    return 1;
}
std::int32_t acceptVersion(std::int32_t, char*, std::int32_t*) {
    return 1;
}

#define HOST_OPERATION(operation, form, ...)            \
    struct operation##Traits {                          \
        using Function = __VA_ARGS__;                   \
        static constexpr const char* name = #operation; \
    };
#include "hostapi/hux_operations.inc"
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
#include "hostapi/opt_operations.inc"
#undef HOST_OPERATION

std::map<std::string, AnyFunction> scriptedSymbols() {
    std::map<std::string, AnyFunction> symbols = {
#define SYMBOL_plain(operation) #operation
#define SYMBOL_text(operation) "C" #operation
#define HOST_OPERATION(operation, form, ...) \
    {SYMBOL_##form(operation), any(&Script<operation##Traits>::call)},
#include "hostapi/hux_operations.inc"
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
#include "hostapi/opt_operations.inc"
#undef HOST_OPERATION
        {"XCreate", any(createOptions)},
        {"XFree", any(freeOptions)},
        {"CXCheck", any(acceptName)},
        {"CXAPIVersion", any(acceptVersion)},
    };
    symbols["optMessageCount"] = any(messageCount);
    symbols["CoptGetMessage"] = any(getMessage);
    for (const std::string prefix : {"nmo", "nev", "hux"}) {
        symbols[prefix + "XCreate"] = any(createAudit);
        symbols["C" + prefix + "XCreateD"] = any(createAudit);  // bound, never called
        symbols[prefix + "XFree"] = any(freeAudit);
        symbols["C" + prefix + "XCheck"] = any(acceptName);
        symbols["C" + prefix + "XAPIVersion"] = any(acceptVersion);
    }
    return symbols;
}

void bind(Binding& binding) {
    static const std::map<std::string, AnyFunction> symbols = scriptedSymbols();
    const LibraryLoading loading = {
        [](const std::string&, std::string&) -> LibraryHandle { return &anObject; },
        [](LibraryHandle, const std::string& symbol) {
            const auto found = symbols.find(symbol);
            return found != symbols.end() ? found->second : nullptr;
        }};
    char message[256];
    if (!binding.ensureLoaded({message, sizeof message}, loading)) {
        throw std::runtime_error(message);
    }
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

void NorvLocalSolver::setupModel() {
    world.calls.emplace_back("setupModel");
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
    vex::test::world.calls.emplace_back(hook != nullptr ? "hook" : "no hook");
    vex::test::world.hook = hook;
}
ls_solver* ls_create_solver() {
    vex::test::world.calls.emplace_back("ls_create_solver");
    if (!vex::test::world.creationError.empty()) {
        vex::test::world.hook(LS_ERROR_MEMORY, vex::test::world.creationError.c_str(), "file",
                              "function", 1, nullptr);
    }
    return reinterpret_cast<ls_solver*>(&vex::test::anObject);
}
void ls_delete_solver(ls_solver*) {
    vex::test::world.calls.emplace_back("ls_delete_solver");
}
void ls_set_verbosity(ls_solver*, int level) {
    vex::test::world.calls.push_back("ls_set_verbosity: " + std::to_string(level));
}
