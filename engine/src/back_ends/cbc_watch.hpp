#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <utility>

#include <ClpEventHandler.hpp>

#include "back_ends/exact_back_end.hpp"

namespace engine {

/// Counts the work of one exact solve and decides when it ends.
///
/// The solver's event handlers, which it clones at will, all refer to one watch. The clock only
/// spaces the questions to the pace; what that throws is kept until the solver has returned.
class CbcWatch {
public:
    /// @param nbEntries  of the problem's rows: what a node or pivot costs grows with them.
    /// @param grace      pivots granted when the pace has ended already.
    CbcWatch(Pace& pace, std::size_t nbEntries, std::int64_t grace)
        : pace_(pace), workPerStep_(1000 + static_cast<std::int64_t>(nbEntries) * 2 / 5) {
        if (grace > 0 && pace.mustEnd()) finish(grace);
    }

    void count() noexcept {
        ++effort_;
        ++nbUntold_;
        if (mayHold_) tell();
    }
    /// Once true, true for ever: a solver that is told to stop may ask again.
    bool mustStop() noexcept {
        if (finishing_) return effort_ >= finishEnd_ || isOverdue();
        if (!stopped_ && mayHold_) stopped_ = wantsStop();
        return stopped_;
    }
    [[nodiscard]] bool stopped() const { return stopped_; }
    [[nodiscard]] std::int64_t effort() const { return effort_; }
    /// While false the solve is neither held nor stopped.
    void letHold(bool may) { mayHold_ = may; }
    /// From now on only `enough` pivots more are left, for which no stop is asked.
    void finish(std::int64_t enough) {
        finishing_ = true;
        finishEnd_ = effort_ + enough;
        finishTime_ = Clock::now() + urgentFinish;
    }
    void rethrow() const {
        if (thrown_) std::rethrow_exception(thrown_);
    }

private:
    using Clock = std::chrono::steady_clock;
    static constexpr auto urgentFinish = std::chrono::milliseconds(80);

    [[nodiscard]] bool isOverdue() const { return pace_.isUrgent() && Clock::now() > finishTime_; }
    void tell() noexcept {
        try {
            if (!pace_.spend(std::exchange(nbUntold_, 0) * workPerStep_)) stopped_ = true;
        } catch (...) {
            keep(std::current_exception());
        }
    }
    bool wantsStop() noexcept {
        constexpr auto interval = std::chrono::milliseconds(20);
        const auto now = Clock::now();
        if (now < nextQuestion_) return false;
        nextQuestion_ = now + interval;
        try {
            return pace_.mustEnd();
        } catch (...) {
            keep(std::current_exception());
            return true;
        }
    }
    /// The solver's frames are not made for foreign exceptions.
    void keep(std::exception_ptr thrown) noexcept {
        stopped_ = true;
        if (!thrown_) thrown_ = std::move(thrown);
    }

    Pace& pace_;
    std::int64_t workPerStep_;
    std::int64_t effort_ = 0;    ///< nodes and pivots
    std::int64_t nbUntold_ = 0;  ///< of `effort_`, that the pace does not know of
    std::int64_t finishEnd_ = 0;
    bool mayHold_ = true;
    bool stopped_ = false;
    bool finishing_ = false;
    Clock::time_point nextQuestion_{};
    Clock::time_point finishTime_{};  ///< of an urgent finish
    std::exception_ptr thrown_;
};

/// Counts pivots.
class PivotEvents final : public ClpEventHandler {
public:
    explicit PivotEvents(CbcWatch& watch) : watch_(&watch) {}
    int event(Event which) override {
        constexpr int goOn = -1;
        constexpr int stop = 0;
        if (which == endOfIteration) watch_->count();
        // Other events ask questions of their own, where "stop" would mean something else.
        if (which != endOfIteration && which != endOfFactorization) return goOn;
        return watch_->mustStop() ? stop : goOn;
    }
    [[nodiscard]] ClpEventHandler* clone() const override { return new PivotEvents(*this); }

private:
    CbcWatch* watch_;
};

}  // namespace engine
