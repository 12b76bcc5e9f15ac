#pragma once

#include <cstdint>
#include <memory>

#include "diag/solve_trace.hpp"
#include "translate/nlocalsolver.hpp"

namespace vex {

/// Owns the solve trace for the time of one solve and lends it to the link object, whose callback
/// writes to it.
class TraceHolder {
public:
    /// `writer` must outlive this object and has no open trace.
    explicit TraceHolder(NorvLocalSolver& writer) : link_(writer) {}
    TraceHolder(const TraceHolder&) = delete;
    TraceHolder& operator=(const TraceHolder&) = delete;
    ~TraceHolder() { close(); }

    /// Opens the trace when the option "solvetrace" names a file.
    /// @return 0, or the reason's number after a line in the host's log.
    [[nodiscard]] std::int32_t openOnRequest();

    /// Writes the closing line of an open trace; the link object has none afterwards.
    void close();

private:
    NorvLocalSolver& link_;
    std::unique_ptr<SolveTrace> trace_;
};

/// The infinity than which no objective value of the host's model is worse; its negative is the
/// best bound as long as nothing is known.
[[nodiscard]] double worstValue(const NorvLocalSolver& link);

}  // namespace vex
