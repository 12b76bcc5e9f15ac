#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "norv/environment.hpp"
#include "solve/ends.hpp"
#include "solve/plot/trace_file.hpp"
#include "solve/settings/settings.hpp"

namespace norv {

/// Looks over the link's shoulder while it searches: ends the search at the program's own limits,
/// and picks bounds up from the optimizer's progress lines.
class SearchWatch {
public:
    using Clock = std::chrono::steady_clock;

    /// From now on until its end it is the environment's poll hook.
    /// @param environment  outlives this object.
    /// @param start        of the program.
    /// @param tracePath    where the link writes its trace; empty: it writes none.
    SearchWatch(Environment& environment, const SolveSettings& settings, Clock::time_point start,
                std::string tracePath);
    ~SearchWatch();
    SearchWatch(const SearchWatch&) = delete;
    SearchWatch& operator=(const SearchWatch&) = delete;

    /// Also at each event of the search, on its thread.
    void setListener(std::function<void()> listener) { listener_ = std::move(listener); }

    /// A line of the log. Progress lines have " || " in them.
    void seeLine(std::string_view line);

    /// Why the host asked the link to stop; none when it did not, or the user did.
    [[nodiscard]] StopReason reason() const { return reason_; }
    /// The best bound that a progress line named.
    [[nodiscard]] std::optional<double> bound() const { return bound_; }
    /// What the link's log says about something that it does not support, or nothing.
    [[nodiscard]] const std::string& refusal() const { return refusal_; }
    /// How link and optimizer introduce themselves in the log.
    [[nodiscard]] const std::string& linkVersion() const { return introductions_[0]; }
    [[nodiscard]] const std::string& optimizer() const { return introductions_[1]; }
    /// Seconds after the start at which each bound was named.
    [[nodiscard]] const std::vector<std::pair<double, double>>& bounds() const { return bounds_; }

    [[nodiscard]] const std::vector<Infeasibility>& infeasible() const { return infeasible_; }

private:
    void poll();
    void followTrace();

    Environment& environment_;
    const SolveSettings& settings_;
    Clock::time_point start_;
    Clock::time_point searchStart_;
    std::string tracePath_;
    std::size_t traceOffset_ = 0;  ///< what has been read of the trace
    std::optional<double> bestFound_;
    Clock::time_point improvement_;  ///< when it was found
    StopReason reason_ = StopReason::none;
    std::optional<double> bound_;
    std::vector<std::pair<double, double>> bounds_;
    std::vector<Infeasibility> infeasible_;
    std::string refusal_;
    std::function<void()> listener_;
    std::string introductions_[2];  ///< the first lines with the optimizer's name
};

/// The number behind the word "bound" in a progress line; nothing without one.
[[nodiscard]] std::optional<double> boundIn(std::string_view line);

/// "3 of 7 constraints violated" in a progress line; nothing without it. The time is not set.
[[nodiscard]] std::optional<Infeasibility> infeasibilityIn(std::string_view line);

}  // namespace norv
