#include "double/host_double.hpp"

#include <algorithm>
#include <cctype>
#include <string>

#include "double/exchange.hpp"
#include "host/host_interfaces.hpp"
#include "hostapi/handles.hpp"
#include "hostapi/library_entries.hpp"

namespace doubles {

namespace {

using vex::AnyFunction;

/// What a host must be able to rely on in its own answers: counts, handles, settings, versions; and
/// freeing, which runs in destructors.
constexpr std::string_view trusted =
    " nmoM nmoN nmoUseQ nmoMaxQNZ nmoNLCodeSizeMaxRow nmoValNAInt nmoGetjSolver nmoGetRowQNZOne "
    "nmoObjVar nmoObjNZ nmoObjQNZ nmoObjStyle nmoGetEquTypeCnt nmoPinf nmoMinf nmoIndexBaseSet "
    "nmoObjStyleSet nmoObjReformSet nmoSetNRowPerm nmoEnvironment nmoPPool optMessageCount "
    "optVarEquMapCount CnmoXAPIVersion ";

/// A text as a template's argument.
template <std::size_t size>
struct Text {
    consteval Text(const char (&text)[size]) { std::copy_n(text, size, characters); }
    char characters[size];
};

template <class Argument>
constexpr bool isOutput = std::is_same_v<Argument, std::int32_t*> ||
                          std::is_same_v<Argument, double*> || std::is_same_v<Argument, void**>;

/// The double of one operation or entry; `shown` begins behind the "C" of operations that pass
/// text.
template <Text symbol, std::size_t shown, class Function>
struct Double;

template <Text symbol, std::size_t shown, class Result, class... Arguments>
struct Double<symbol, shown, Result(Arguments...)> {
    static Result call(Arguments... arguments) {
        constexpr const char* name = symbol.characters + shown;
        static auto* const real =
            reinterpret_cast<Result (*)(Arguments...)>(realFunction(symbol.characters));
        static const bool mayFail = !(std::is_void_v<Result> && (isOutput<Arguments> || ...)) &&
                                    trusted.find(" " + std::string(name) + " ") == trusted.npos;
        return respond<Result>(name, mayFail, real, arguments...);
    }
};

template <Text name>
std::int32_t check(const char* operation, std::int32_t nbArguments, const std::int32_t* signature,
                   char* message) {
    std::string question = operation + (" " + std::to_string(nbArguments)) + ":";
    for (std::int32_t k = 0; k <= nbArguments; ++k) question += " " + std::to_string(signature[k]);
    constexpr auto accept = [](const char*, char* reason) -> std::int32_t {
        reason[0] = '\0';
        return 1;
    };
    return respond<std::int32_t>(name.characters, false, accept, question.c_str(), message);
}

const std::map<std::string, AnyFunction>& symbols() {
#define DOUBLE(symbol, shown, ...) \
    { symbol, reinterpret_cast<AnyFunction>(&Double<symbol, shown, __VA_ARGS__>::call) }
#define OPERATION_plain(name, ...) DOUBLE(#name, 0, __VA_ARGS__)
#define OPERATION_text(name, ...) DOUBLE("C" #name, 1, __VA_ARGS__)
#define HOST_OPERATION(name, form, ...) OPERATION_##form(name, __VA_ARGS__),
#define ENTRIES(prefix)                                                                 \
    DOUBLE(prefix "XCreate", 0, hostapi::CreateEntry),                                  \
        DOUBLE("C" prefix "XCreateD", 0, hostapi::CreateInDirectoryEntry),              \
        DOUBLE(prefix "XFree", 0, hostapi::FreeEntry),                                  \
        DOUBLE("C" prefix "XAPIVersion", 0, hostapi::VersionEntry), {                   \
        "C" prefix "XCheck", reinterpret_cast<AnyFunction>(&check<"C" prefix "XCheck">) \
    }
    static const std::map<std::string, AnyFunction> all = {
#include "hostapi/hux_operations.inc"
#include "hostapi/nev_operations.inc"
#include "hostapi/nmo_operations.inc"
#include "hostapi/opt_operations.inc"
        ENTRIES("hux"), ENTRIES("nev"), ENTRIES("nmo"), ENTRIES("")};
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

std::string spelt(std::string symbol) {
    const std::string* const spelling = exchange().answerTo("spelling", "");
    if (spelling == nullptr) return symbol;
    for (char& c : symbol) c = static_cast<char>(*spelling == "lower" ? tolower(c) : toupper(c));
    return symbol;
}

AnyFunction findSymbol(vex::LibraryHandle, const std::string& symbol) {
    const auto found = std::find_if(symbols().begin(), symbols().end(), [&](const auto& entry) {
        return spelt(entry.first) == symbol;
    });
    const bool isThere = found != symbols().end();
    const auto find = [&](const char*) { return isThere ? found->second : nullptr; };
    return respond<AnyFunction>(isThere ? "find" : "miss", isThere, find, symbol.c_str());
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
