#include "host/operations.hpp"

#include "host/host_interfaces.hpp"
#include "hostapi/type_codes.hpp"

namespace vex {

namespace {

#define HOST_SYMBOL_plain(name) #name
#define HOST_SYMBOL_text(name) "C" #name

// Per operation `nmoX` a type `nmoXTraits`: its name, its symbol, its type, its slot.
#define HOST_OPERATION(operation, form, ...)                                 \
    struct operation##Traits {                                               \
        using Function = __VA_ARGS__;                                        \
        static constexpr const char* name = #operation;                      \
        static constexpr const char* symbol = HOST_SYMBOL_##form(operation); \
        static constexpr Slot<Function>& slot = vex::operation;              \
    };
#include "hostapi/hux_operations.inc"
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
#include "hostapi/opt_operations.inc"
#undef HOST_OPERATION

template <class Traits>
constexpr Operation operationOf = {
    Traits::name, Traits::symbol, hostapi::Signature<typename Traits::Function>::nbArguments,
    hostapi::Signature<typename Traits::Function>::codes.data(),
    [](AnyFunction function) noexcept { Traits::slot.bind(function); }};

// The binding that an operation belongs to, by the type of the object it works on.
Binding& bindingOf(AuditHandle) {
    return huxBinding;
}
Binding& bindingOf(EnvironmentHandle) {
    return nevBinding;
}
Binding& bindingOf(ModelHandle) {
    return nmoBinding;
}
Binding& bindingOf(OptionHandle) {
    return optBinding;
}

template <class Traits, class Function = typename Traits::Function>
struct MissingFunction;

template <class Traits, class Result, class Object, class... Arguments>
struct MissingFunction<Traits, Result(Object, Arguments...)> {
    static Result call(Object object, Arguments...) {
        bindingOf(object).reportMissing(operationOf<Traits>);
    }
};

}  // namespace

#define HOST_OPERATION(operation, form, ...) \
    constinit Slot<__VA_ARGS__> operation{&MissingFunction<operation##Traits>::call};
#include "hostapi/hux_operations.inc"
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
#include "hostapi/opt_operations.inc"
#undef HOST_OPERATION

namespace {

#define HOST_OPERATION(operation, form, ...) operationOf<operation##Traits>,
constexpr Operation huxOperations[] = {
#include "hostapi/hux_operations.inc"
};
constexpr Operation nevOperations[] = {
#include "hostapi/nev_operations.inc"
};
constexpr Operation nmoOperations[] = {
#include "hostapi/nmo_operations.inc"
};
constexpr Operation optOperations[] = {
#include "hostapi/opt_operations.inc"
};
#undef HOST_OPERATION

}  // namespace

constexpr HostInterface huxInterface = {
    "hubdclib",
    hostapi::interface_version::hux,
    {"huxXCreate", nullptr, "huxXFree", "ChuxXCheck", "ChuxXAPIVersion"},
    huxOperations};
constexpr HostInterface nevInterface = {
    "hubdclib",
    hostapi::interface_version::nev,
    {"nevXCreate", "CnevXCreateD", "nevXFree", "CnevXCheck", "CnevXAPIVersion"},
    nevOperations};
constexpr HostInterface nmoInterface = {
    "hubdclib",
    hostapi::interface_version::nmo,
    {"nmoXCreate", "CnmoXCreateD", "nmoXFree", "CnmoXCheck", "CnmoXAPIVersion"},
    nmoOperations};
constexpr HostInterface optInterface = {"prmdclib",
                                        hostapi::interface_version::opt,
                                        {"XCreate", nullptr, "XFree", "CXCheck", "CXAPIVersion"},
                                        optOperations};

constinit Binding huxBinding{huxInterface};
constinit Binding nevBinding{nevInterface};
constinit Binding nmoBinding{nmoInterface};
constinit Binding optBinding{optInterface};

}  // namespace vex
