#pragma once

#include <stdexcept>
#include <string>

#include "solve/ends.hpp"

namespace norv {

/// Ends the program: the text goes to the standard error stream, the code to the caller.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}
    [[nodiscard]] ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

/// How the program ends and what it says on the way out.
struct Complaint {
    ExitCode code;
    std::string reason;   ///< one line or more, without the last line's end
    std::string speaker;  ///< stands in front of it on the standard error stream

    [[nodiscard]] std::string line() const { return speaker + reason + '\n'; }
};

/// What the exception in flight comes to. Called inside a catch block only.
Complaint currentComplaint();

}  // namespace norv
