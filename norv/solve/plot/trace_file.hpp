#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "readers/input_text.hpp"

namespace norv {

/// One record of a solve trace.
struct TraceRecord {
    double seconds = 0.0;             ///< since the trace began; never less than in the one before
    std::optional<double> bestFound;  ///< nothing while there is none ("na")
    std::optional<double> bestBound;
};

/// How far the search was from a first point, as a progress line told.
struct Infeasibility {
    double seconds = 0.0;  ///< since the search began
    double nbViolated = 0.0;
    double nbConstraints = 0.0;  ///< of so many
};

/// A solve trace as the link's option "solvetrace" makes it.
struct TraceFile {
    std::string instance;  ///< as its first line names it, perhaps empty
    std::vector<TraceRecord> records;
    std::vector<Infeasibility> infeasible;  ///< in order of time; a file has none
};

/// Does the file begin like a solve trace?
[[nodiscard]] bool looksLikeTrace(std::string_view content) noexcept;

/// Reads a solve trace, also one that was cut off between two lines.
/// Throws ReadError with line and column at the first fault.
[[nodiscard]] TraceFile readTrace(const InputText& file);

}  // namespace norv
