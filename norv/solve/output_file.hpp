#pragma once

#include <fstream>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "solve/temporary_files.hpp"

namespace norv {

/// A result on its way to a file: opened before the search, so that a folder that does not exist is
/// known then, written beside the file, and put in its place by renaming, so that whoever looks
/// finds the old file or the whole new one. Devices and pipes are written directly.
class OutputFile {
public:
    /// @param path  "-": the standard output.
    /// Failure (outputFailed) with path and reason.
    explicit OutputFile(const std::string& path);

    [[nodiscard]] const std::string& path() const { return path_; }
    /// Is the file put in place whole? Then it may be written again and again.
    [[nodiscard]] bool isReplaced() const { return !isDirect_; }
    /// Behind what was written since the last `finish`; a file that is replaced begins anew.
    /// Failure (outputFailed) when it cannot be opened once more.
    [[nodiscard]] std::ostream& stream();
    /// Failure (outputFailed) when anything was not written.
    void finish();

private:
    void open();

    std::string path_;
    std::string target_;  ///< what a symbolic link points to
    std::optional<TemporaryFile> beside_;
    std::ofstream file_;
    bool isStandardOutput_;
    bool isDirect_;  ///< standard output, device or pipe
};

/// Refuses outputs that are the model, or one another, before anything is opened.
/// @param inputs, outputs  paths; empty ones and "-" (but for two of them) are none.
/// Failure (badInput) with the path.
void requireDistinct(const std::vector<std::string>& inputs,
                     const std::vector<std::string>& outputs);

/// Failure (outputFailed) when the standard output could not take all that was printed.
void requirePrinted();

}  // namespace norv
