#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

namespace vex {

/// Writer of a solve trace: one text line per record of the best objective value and the best
/// bound over the wall-clock time of a solve.
///
/// The first record is an S record, T records follow at least one time interval apart, the last is
/// an E record. Every call flushes the file, so that an interrupted process leaves what was known.
/// Failures to write are ignored. One thread at a time.
class SolveTrace {
public:
    /// What the trace is about. All texts end up in the header line.
    struct Subject {
        std::string fileName;  ///< also the file that is written; replaced if it exists
        std::string solverId;
        std::int32_t optionFile = 0;         ///< 0 is not shown
        const char* instanceName = nullptr;  ///< null prints as nothing
        double infinity = 0.0;      ///< values at or beyond +-infinity, and NaN, print as "na"
        double timeInterval = 0.0;  ///< seconds between T records; 0 or less: none
    };

    /// Writes the header lines to `opened`; use `create`.
    SolveTrace(std::ofstream opened, const Subject& subject);

    /// Opens the file and writes the header lines.
    /// @return 0; 3 when the file cannot be opened, and then `trace` is null.
    [[nodiscard]] static std::int32_t create(std::unique_ptr<SolveTrace>& trace,
                                             const Subject& subject);

    /// Writes the S record if there is none yet, then a T record if one is due.
    void update(std::int64_t node, double bestBound, double bestFound);

    /// Writes the E record, after an S record if there is none yet.
    void finish(std::int64_t node, double bestBound, double bestFound);

    /// Writes the closing line, closes the file and sets `trace` to null; null does nothing.
    static void close(std::unique_ptr<SolveTrace>& trace);

private:
    void writeRecord(char series, std::int64_t node, double now, double bestBound,
                     double bestFound);
    [[nodiscard]] std::string textOf(double value) const;

    std::ofstream file_;
    double infinity_;
    double timeInterval_;
    std::int64_t lineNumber_ = 1;  ///< of the next record
    double startTime_;
    double lastTime_ = 0.0;  ///< of the last S or T record
};

}  // namespace vex
