#include "diag/solve_trace.hpp"

#include <chrono>
#include <cmath>

#include "diag/number_text.hpp"

namespace vex {

namespace {

constexpr std::int32_t cannotOpen = 3;

/// Seconds of the wall clock, in whole milliseconds.
double wallClock() {
    using namespace std::chrono;
    const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch());
    return static_cast<double>(now.count()) / 1000.0;
}

}  // namespace

std::int32_t SolveTrace::create(std::unique_ptr<SolveTrace>& trace, const Subject& subject) {
    trace.reset();
    std::ofstream opened(subject.fileName);  // as text: the platform's line ends
    if (!opened) return cannotOpen;
    trace = std::make_unique<SolveTrace>(std::move(opened), subject);
    return 0;
}

SolveTrace::SolveTrace(std::ofstream opened, const Subject& subject)
    : file_(std::move(opened)),
      infinity_(subject.infinity),
      timeInterval_(subject.timeInterval),
      startTime_(wallClock()) {
    const std::string suffix =
        subject.optionFile == 0 ? "" : "." + std::to_string(subject.optionFile);
    file_ << "* solvetrace file " << subject.fileName << ": ID = " << subject.solverId << suffix
          << " Instance = " << (subject.instanceName != nullptr ? subject.instanceName : "") << "\n"
          << "* fields are lineNum, seriesID, node, seconds, bestFound, bestBound\n"
          << std::flush;
}

void SolveTrace::update(std::int64_t node, double bestBound, double bestFound) {
    const double now = wallClock();
    if (lineNumber_ == 1) {
        writeRecord('S', node, now, bestBound, bestFound);
        lastTime_ = now;
    }
    if (timeInterval_ > 0.0 && now - lastTime_ >= timeInterval_) {
        writeRecord('T', node, now, bestBound, bestFound);
        lastTime_ = now;
    }
}

void SolveTrace::finish(std::int64_t node, double bestBound, double bestFound) {
    const double now = wallClock();
    if (lineNumber_ == 1) writeRecord('S', node, now, bestBound, bestFound);
    writeRecord('E', node, now, bestBound, bestFound);
}

void SolveTrace::close(std::unique_ptr<SolveTrace>& trace) {
    if (trace == nullptr) return;
    trace->file_ << "* solvetrace file closed\n";
    trace.reset();
}

void SolveTrace::writeRecord(char series, std::int64_t node, double now, double bestBound,
                             double bestFound) {
    // A clock that was set back must not make the time run backwards past the start.
    const double elapsed = std::fmax(now - startTime_, 0.0);
    // Integers as text too: a stream would group their digits under some locales.
    file_ << std::to_string(lineNumber_) << ", " << series << ", " << std::to_string(node) << ", "
          << generalText(elapsed, /*digits=*/6) << ", " << textOf(bestFound) << ", "
          << textOf(bestBound) << "\n"
          << std::flush;
    ++lineNumber_;
}

std::string SolveTrace::textOf(double value) const {
    // A comparison with not-a-number is false: it is not available either.
    const bool available = value > -infinity_ && value < infinity_;
    return available ? generalText(value, /*digits=*/10) : "na";
}

}  // namespace vex
