#include "link/interface_checks.hpp"

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "host/message_text.hpp"
#include "host/type_codes.hpp"
#include "link/entry_points.hpp"

namespace vex {

namespace {

/// An entry point that can be asked about; its signature comes from its declaration.
struct AskableEntryPoint {
    std::string_view name;
    std::int32_t nbArguments;
    std::span<const std::int32_t> signature;
};

template <class Function>
constexpr AskableEntryPoint askable(std::string_view name) {
    return {name, Signature<Function>::nbArguments, Signature<Function>::codes};
}

constexpr AskableEntryPoint askableEntryPoints[] = {
    askable<decltype(vexCallSolver)>("vexCallSolver"),
    askable<decltype(vexReadyAPI)>("vexReadyAPI"),
};

}  // namespace

Answer answerVersion(std::int32_t api, std::int32_t* compatibility) {
    enum : std::int32_t { tooOld = 0, same = 1, newer = 3 };
    const std::int32_t verdict = api <= 0 ? tooOld : api == 1 ? same : newer;
    if (compatibility != nullptr) *compatibility = verdict;

    Answer answer{verdict == tooOld ? 0 : 1};
    MessageText message(answer.message, sizeof answer.message);
    switch (verdict) {
        case tooOld:
            message << "vexcclib: The API is too old for the used library, API version: "
                    << std::to_string(api) << ", library version: 1";
            break;
        case same:
            message << "vexcclib: Client version and DLL version are the same.";
            break;
        default:
            message << "vexcclib: Client version is newer than this DLL.";
    }
    return answer;
}

Answer answerSignature(const char* name, std::int32_t nbArguments, const std::int32_t* signature) {
    const std::string_view asked = name != nullptr ? name : "";
    Answer answer;
    MessageText message(answer.message, sizeof answer.message);
    const auto* const entry =
        std::find_if(std::begin(askableEntryPoints), std::end(askableEntryPoints),
                     [&](const AskableEntryPoint& candidate) { return candidate.name == asked; });
    if (entry == std::end(askableEntryPoints)) {
        message << "vexcclib: " << asked << " cannot be found in library.";
    } else if (nbArguments != entry->nbArguments) {
        message << "vexcclib: " << asked << " has wrong number of arguments.";
    } else if (signature == nullptr ||
               !std::equal(entry->signature.begin(), entry->signature.end(), signature)) {
        message << "vexcclib: " << asked << " has wrong argument types.";
    } else {
        answer.accepted = 1;
    }
    return answer;
}

void storeTerminated(const char* text, char* message) {
    if (message != nullptr) std::copy_n(text, std::strlen(text) + 1, message);
}

void storePrefixed(const char* text, unsigned char* message) {
    if (message == nullptr) return;
    const std::size_t length = std::strlen(text);  // at most longestAnswer, so it fits a byte
    message[0] = static_cast<unsigned char>(length);
    std::copy_n(text, length, message + 1);
}

Unprefixed::Unprefixed(const unsigned char* prefixed) {
    if (prefixed != nullptr) std::copy_n(prefixed + 1, prefixed[0], text);
}

}  // namespace vex
