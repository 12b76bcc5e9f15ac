#include "double/host_double.hpp"

#include <string>

#include "double/exchange.hpp"
#include "host/host_interfaces.hpp"
#include "hostapi/handles.hpp"
#include "hostapi/library_entries.hpp"

namespace doubles {

namespace {

using vex::AnyFunction;

/// What a host must be able to rely on in its own answers: counts, handles, settings; and freeing,
/// which runs in destructors.
constexpr std::string_view trusted =
    " nmoM nmoN nmoUseQ nmoMaxQNZ nmoNLCodeSizeMaxRow nmoValNAInt nmoGetjSolver nmoGetRowQNZOne "
    "nmoObjVar nmoObjNZ nmoObjQNZ nmoObjStyle nmoGetEquTypeCnt nmoPinf nmoMinf nmoIndexBaseSet "
    "nmoObjStyleSet nmoObjReformSet nmoSetNRowPerm nmoEnvironment nmoPPool optMessageCount "
    "optVarEquMapCount ";

template <class Function>
Function* builtIn(const char* symbol) {
    const vex::LibraryLoading& loading = vex::platformLoading();
    for (const char* library : {"hubdclib64", "prmdclib64"}) {
        std::string reason;
        const AnyFunction found =
            loading.find(loading.open(std::string(library) + vex::librarySuffix, reason), symbol);
        if (found != nullptr) return reinterpret_cast<Function*>(found);
    }
    throw std::runtime_error(symbol);
}

/// The double of one operation, from its name and type.
template <class Traits, class Function = typename Traits::Function>
struct Double;

template <class Traits, class Result, class Object, class... Arguments>
struct Double<Traits, Result(Object, Arguments...)> {
    static Result call(Object object, Arguments... arguments) {
        static auto* const real = builtIn<Result(Object, Arguments...)>(Traits::symbol);
        static const bool mayFail =
            !(std::is_void_v<Result> && (isOutput<Arguments> || ...)) &&
            trusted.find(" " + std::string(Traits::name) + " ") == trusted.npos;
        const auto forward = [object](Arguments... a) -> Result { return real(object, a...); };
        return respond<Result>(Traits::name, mayFail, forward, arguments...);
    }

private:
    template <class Argument>
    static constexpr bool isOutput =
        std::is_same_v<Argument, std::int32_t*> || std::is_same_v<Argument, double*> ||
        std::is_same_v<Argument, void**>;
};

#define SYMBOL_plain(name) #name
#define SYMBOL_text(name) "C" #name
#define HOST_OPERATION(operation, form, ...)                            \
    struct operation##Traits {                                          \
        using Function = __VA_ARGS__;                                   \
        static constexpr const char* name = #operation;                 \
        static constexpr const char* symbol = SYMBOL_##form(operation); \
    };
#include "hostapi/hux_operations.inc"
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
#include "hostapi/opt_operations.inc"
#undef HOST_OPERATION

template <class Function>
AnyFunction any(Function* function) {
    return reinterpret_cast<AnyFunction>(function);
}

// The entries of one interface, named by a type.

template <class Name>
std::int32_t create(void** handle) {
    return respond<std::int32_t>(Name::create, true, builtIn<hostapi::CreateEntry>(Name::create),
                                 handle);
}
template <class Name>
std::int32_t createInDirectory(void**, const char*, char*, std::int32_t) {
    return 0;  // looked up, never called
}
template <class Name>
void destroy(void** handle) {
    respond<void>(Name::free, false, builtIn<hostapi::FreeEntry>(Name::free), handle);
}
template <class Name>
std::int32_t version(std::int32_t api, char* message, std::int32_t* compatibility) {
    return respond<std::int32_t>(Name::version, false,
                                 builtIn<hostapi::VersionEntry>(Name::version), api, message,
                                 compatibility);
}
template <class Name>
std::int32_t check(const char* name, std::int32_t nbArguments, const std::int32_t* signature,
                   char* message) {
    std::string question = name + (" " + std::to_string(nbArguments)) + ":";
    for (std::int32_t k = 0; k <= nbArguments; ++k) question += " " + std::to_string(signature[k]);
    constexpr auto accept = [](const char*, char* reason) -> std::int32_t {
        reason[0] = '\0';
        return 1;
    };
    return respond<std::int32_t>(Name::check, false, accept, question.c_str(), message);
}

#define INTERFACE(interface, prefix)                                            \
    struct interface {                                                          \
        static constexpr const char* create = prefix "XCreate";                 \
        static constexpr const char* createInDirectory = "C" prefix "XCreateD"; \
        static constexpr const char* free = prefix "XFree";                     \
        static constexpr const char* check = "C" prefix "XCheck";               \
        static constexpr const char* version = "C" prefix "XAPIVersion";        \
    }
INTERFACE(Hux, "hux");
INTERFACE(Nev, "nev");
INTERFACE(Nmo, "nmo");
INTERFACE(Opt, "");
#undef INTERFACE

using Symbols = std::map<std::string, AnyFunction>;

template <class Name>
void addEntries(Symbols& symbols) {
    symbols[Name::create] = any(&create<Name>);
    symbols[Name::createInDirectory] = any(&createInDirectory<Name>);
    symbols[Name::free] = any(&destroy<Name>);
    symbols[Name::check] = any(&check<Name>);
    symbols[Name::version] = any(&version<Name>);
}

Symbols makeSymbols() {
#define HOST_OPERATION(operation, form, ...) \
    {SYMBOL_##form(operation), any(&Double<operation##Traits>::call)},
    Symbols symbols = {
#include "hostapi/hux_operations.inc"
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
#include "hostapi/opt_operations.inc"
    };
#undef HOST_OPERATION
    addEntries<Hux>(symbols);
    addEntries<Nev>(symbols);
    addEntries<Nmo>(symbols);
    addEntries<Opt>(symbols);
    return symbols;
}

const Symbols& symbols() {
    static const Symbols all = makeSymbols();
    return all;
}

vex::LibraryHandle openLibrary(const std::string& fileName, std::string& reason) {
    constexpr auto open = [](const char*) -> vex::LibraryHandle {
        static char library = 0;
        return &library;
    };
    const auto library = respond<vex::LibraryHandle>("open", false, open, fileName.c_str());
    if (library == nullptr) reason = "no such file";
    return library;
}

AnyFunction findSymbol(vex::LibraryHandle, const std::string& symbol) {
    const bool isThere = symbols().count(symbol) != 0;
    const auto find = [isThere](const char* name) -> AnyFunction {
        return isThere ? symbols().at(name) : nullptr;
    };
    return respond<AnyFunction>(isThere ? "find" : "miss", false, find, symbol.c_str());
}

}  // namespace

const vex::LibraryLoading& hostLoading() {
    static const vex::LibraryLoading loading = {openLibrary, findSymbol};
    return loading;
}

void bindHost() {
    char message[1024];
    for (vex::Binding* binding :
         {&vex::nmoBinding, &vex::nevBinding, &vex::huxBinding, &vex::optBinding}) {
        if (!binding->ensureLoaded({message, sizeof message}, hostLoading()))
            throw std::runtime_error(message);
    }
}

}  // namespace doubles
