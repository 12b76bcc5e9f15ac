// The option object's operations as the link calls them, and the library entries.

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "hostapi/codes.hpp"
#include "hostapi/handles.hpp"
#include "interface/guarded.hpp"
#include "interface/library_object.hpp"
#include "interface/text_result.hpp"
#include "norv/export.hpp"
#include "options/option_record.hpp"

#define NORV_DECLARE_OPERATIONS
#include "interface/declare_operations.hpp"
// The table comes last: it uses the macro.
#include "hostapi/opt_operations.inc"

using hostapi::OptionHandle;
using hostapi::OptionRecord;
using norv::guarded;
using norv::guardedVoid;
using norv::OptionType;

namespace {

#define NORV_DESCRIBE_OPERATIONS
#include "interface/declare_operations.hpp"
constexpr norv::Operation operations[] = {
#include "hostapi/opt_operations.inc"
};
constexpr norv::Interface served = {"prmdclib64", "opt", hostapi::interface_version::opt,
                                    operations};

std::string orEmpty(const char* text) {
    return text == nullptr ? std::string() : text;
}

/// Runs `body`; a refusal becomes a message and the result is `fallback`.
template <class Result, class Body>
Result answered(const char* operation, OptionHandle opt, Result fallback, Body&& body) noexcept {
    return guarded(operation, opt, fallback, [&](OptionRecord& options) {
        try {
            return static_cast<Result>(body(options));
        } catch (const norv::OptionError& error) {
            options.addMessage(error.type, error.what());
            return fallback;
        }
    });
}

}  // namespace

NORV_LIBRARY_ENTRIES(XCreate, XFree, CXCheck, CXAPIVersion, OptionRecord, served)

std::int32_t CoptReadDefinition(OptionHandle opt, const char* path) {
    return guarded(__func__, opt, 1, [path](OptionRecord& options) {
        return options.readDefinition(orEmpty(path)) ? 0 : 1;
    });
}

void optEOLOnlySet(OptionHandle opt, std::int32_t flag) {
    guardedVoid(__func__, opt,
                [flag](OptionRecord& options) { options.endsAtLineOnly = flag != 0; });
}

void optEchoSet(OptionHandle opt, std::int32_t flag) {
    guardedVoid(__func__, opt, [flag](OptionRecord& options) { options.echoes = flag != 0; });
}

std::int32_t CoptReadParameterFile(OptionHandle opt, const char* path) {
    return guarded(__func__, opt, 1, [path](OptionRecord& options) {
        return options.readFile(orEmpty(path)) ? 0 : 1;
    });
}

std::int32_t optMessageCount(OptionHandle opt) {
    return guarded(__func__, opt, 0, [](OptionRecord& options) {
        return static_cast<std::int32_t>(options.messages.size());
    });
}

void CoptGetMessage(OptionHandle opt, std::int32_t message, char* text, std::int32_t* type) {
    norv::writeText(text, "");
    if (type != nullptr) *type = 0;
    // Without a report: it would be one more message for whoever counts them.
    if (opt == nullptr || message < 1 || message > optMessageCount(opt)) return;
    const norv::OptionMessage& found = opt->messages[static_cast<std::size_t>(message) - 1];
    norv::writeText(text, found.text);
    if (type != nullptr) *type = found.type;
}

void optClearMessages(OptionHandle opt) {
    guardedVoid(__func__, opt, [](OptionRecord& options) { options.messages.clear(); });
}

std::int32_t CoptGetDefinedStr(OptionHandle opt, const char* name) {
    return guarded(__func__, opt, 0,
                   [name](OptionRecord& options) { return options.isSet(orEmpty(name)) ? 1 : 0; });
}

std::int32_t CoptGetIntStr(OptionHandle opt, const char* name) {
    return answered(__func__, opt, 0, [name](OptionRecord& options) {
        return std::get<std::int32_t>(options.settingOf(orEmpty(name), OptionType::integer).value);
    });
}

double CoptGetDblStr(OptionHandle opt, const char* name) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    return answered(__func__, opt, none, [name](OptionRecord& options) {
        return std::get<double>(options.settingOf(orEmpty(name), OptionType::real).value);
    });
}

char* CoptGetStrStr(OptionHandle opt, const char* name, char* value) {
    norv::writeText(value, "");
    char* none = nullptr;
    return answered(__func__, opt, none, [name, value](OptionRecord& options) {
        const norv::Setting& setting = options.settingOf(orEmpty(name), OptionType::text);
        return norv::writeText(value, std::get<std::string>(setting.value));
    });
}

void CoptSetIntStr(OptionHandle opt, const char* name, std::int32_t value) {
    answered(__func__, opt, 0, [name, value](OptionRecord& options) {
        options.setInteger(orEmpty(name), value);
        return 0;
    });
}

std::int32_t optVarEquMapCount(OptionHandle opt, std::int32_t mapType, std::int32_t* nbErrors) {
    if (nbErrors != nullptr) *nbErrors = 0;
    return guarded(__func__, opt, 0, [mapType, nbErrors](OptionRecord& options) {
        if (mapType != hostapi::variableEquationMap) return 0;
        if (nbErrors != nullptr) *nbErrors = options.nbRefusedPairs;
        return static_cast<std::int32_t>(options.pairs.size());
    });
}
