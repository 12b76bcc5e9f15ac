#include "interface/library_check.hpp"

#include <algorithm>
#include <string>

#include "interface/text_result.hpp"

namespace norv {

namespace {

std::string opening(const Interface& served) {
    return std::string(served.library) + ", interface " + std::string(served.prefix) + ": ";
}

/// The reason of a refusal, empty when the operation is offered as asked for.
std::string reasonAgainst(const Interface& served, std::string_view name, std::int32_t nbArguments,
                          const std::int32_t* signature) {
    const auto found = std::find_if(served.operations.begin(), served.operations.end(),
                                    [name](const Operation& each) { return each.name == name; });
    if (found == served.operations.end())
        return opening(served) + "the library has no operation " + std::string(name) + ".";
    if (nbArguments != found->nbArguments) {
        return opening(served) + std::string(name) + " takes " +
               std::to_string(found->nbArguments) + " arguments after the object, not " +
               std::to_string(nbArguments) + ".";
    }
    for (std::int32_t k = 0; k <= nbArguments; ++k) {
        if (signature[k] == found->codes[k]) continue;
        const std::string place = k == 0 ? "the result" : "argument " + std::to_string(k);
        return opening(served) + std::string(name) + ": " + place + " has type code " +
               std::to_string(found->codes[k]) + ", not " + std::to_string(signature[k]) + ".";
    }
    return {};
}

}  // namespace

std::int32_t checkOperation(const Interface& served, const char* name, std::int32_t nbArguments,
                            const std::int32_t* signature, char* message) noexcept {
    try {
        const std::string reason = name == nullptr || signature == nullptr
                                       ? opening(served) + "a check needs a name and a signature."
                                       : reasonAgainst(served, name, nbArguments, signature);
        writeText(message, reason);
        return reason.empty() ? 1 : 0;
    } catch (...) {
        writeText(message, "the host library is out of memory.");
        return 0;
    }
}

std::int32_t checkVersion(const Interface& served, std::int32_t api, char* message,
                          std::int32_t* compatibility) noexcept {
    const bool tooOld = api < served.version;
    const bool newer = api > served.version;
    if (compatibility != nullptr) *compatibility = tooOld ? 0 : newer ? 3 : 1;
    try {
        std::string verdict = opening(served) + "version " + std::to_string(api);
        if (!tooOld && !newer) verdict += " is the library's own.";
        if (newer) verdict += " is newer than version " + std::to_string(served.version) + ".";
        if (tooOld) {
            verdict +=
                " is too old, the library needs " + std::to_string(served.version) + " or newer.";
        }
        writeText(message, verdict);
    } catch (...) {
        writeText(message, "");
    }
    return tooOld ? 0 : 1;
}

}  // namespace norv
