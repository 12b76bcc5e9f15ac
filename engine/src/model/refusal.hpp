#pragma once

#include <stdexcept>
#include <string>

#include "localsolver.h"

namespace engine {

/// Where in the engine's sources a call was refused. As a default argument it is the caller's line.
struct RefusalSite {
    const char* fileName;
    int line;

    static RefusalSite here(const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
        return {file, line};
    }
};

/// A call of the interface that is refused: nothing has changed. Ends at the C boundary, which
/// hands it to the error hook.
class Refusal : public std::runtime_error {
public:
    Refusal(ls_error_code code, const std::string& text, RefusalSite site = RefusalSite::here())
        : std::runtime_error(text), code_(code), site_(site) {}

    [[nodiscard]] ls_error_code code() const { return code_; }
    [[nodiscard]] RefusalSite site() const { return site_; }

private:
    ls_error_code code_;
    RefusalSite site_;
};

/// printf into a string, for messages.
[[gnu::format(printf, 1, 2)]] std::string formatText(const char* format, ...);

}  // namespace engine
