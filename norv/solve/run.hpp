#pragma once

#include <chrono>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "readers/input_text.hpp"
#include "solve/box_verdict.hpp"
#include "solve/ends.hpp"
#include "solve/model_file.hpp"
#include "solve/model_sizes.hpp"
#include "solve/plot/trace_file.hpp"
#include "solve/settings/settings.hpp"
#include "solve/terminal.hpp"

namespace norv {

using Clock = std::chrono::steady_clock;

/// Seconds that the stages of a run took.
struct StageTimes {
    double reading = 0.0;  ///< from the start of the program on
    double solving = 0.0;  ///< in the link
    double checking = 0.0;
};

/// A run from beginning to end: what all results tell about.
struct RunRecord {
    Settings settings;
    std::optional<LoadedModel> loaded;
    SolveResult result;
    Ending ending;
    std::optional<double> bound;  ///< proved, of the objective
    TraceFile trace;              ///< empty when nobody asked
    StageTimes times;
    ModelSizes sizes;
    std::vector<MadeSetting> allSettings;  ///< each with its value, by default or otherwise
    std::string linkVersion;               ///< its own words in the log
    std::string optimizer;                 ///< likewise
    bool isSolved = false;  ///< the link ran to its end: there are statuses, result and ending

    [[nodiscard]] const Model& model() const { return loaded->model; }
    [[nodiscard]] double objective() const;
    /// "minimise" or "maximise"; empty without an objective.
    [[nodiscard]] const char* direction() const;
    /// |objective - bound| / max(1, |objective|); nothing without one of them.
    [[nodiscard]] std::optional<double> gap() const;
};

/// Where a run writes its log.
struct LogTarget {
    std::ostream& out;
    std::optional<StandardStream> terminal;  ///< the stream that may be one
    bool echoesSettings = true;
    bool explains = true;  ///< somebody reads why there is no solution
};

/// Opens the outputs, reads the model, has the link solve it, prints the log and writes the
/// results. One output that fails does not stop the others.
/// @param record  receives what there is, also when this throws.
/// Throws what `currentComplaint` tells about: before the search for anything wrong with settings,
/// files and outputs; afterwards for the first output that could not be written.
void runSolve(RunRecord& record, const InputText& file, Clock::time_point start, LogTarget log);

}  // namespace norv
