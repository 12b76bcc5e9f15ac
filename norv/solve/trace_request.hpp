#pragma once

#include <optional>
#include <string>

#include "norv/options.hpp"
#include "solve/plot/trace_file.hpp"
#include "solve/temporary_files.hpp"

namespace norv {

/// Sees to it that the link writes a trace of the search that is about to run.
class TraceRequest {
public:
    /// Leaves the option "solvetrace" alone when it is set already; else names a temporary file,
    /// with a record at each event, which goes with this object.
    /// Failure (badInput) when the option cannot be set, (outputFailed) when there is no place for
    /// temporary files.
    explicit TraceRequest(Options& options);

    [[nodiscard]] const std::string& path() const { return path_; }
    /// The trace, once the link has ended; empty when the link wrote none.
    /// @throws ReadError for faults in it.
    [[nodiscard]] TraceFile read() const;

private:
    std::string path_;
    std::optional<TemporaryFile> temporary_;
};

}  // namespace norv
