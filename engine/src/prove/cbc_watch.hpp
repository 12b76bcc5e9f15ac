#pragma once

#include <chrono>
#include <cstdint>
#include <exception>

#include <CbcEventHandler.hpp>
#include <ClpEventHandler.hpp>

#include "prove/exact_back_end.hpp"

namespace engine {

/// Counts the effort of one exact solve and decides when it ends.
///
/// The solver's event handlers, which it clones at will, all refer to one watch. The clock only
/// spaces the questions to shouldStop; what it throws is kept until the solver has returned.
class CbcWatch {
public:
    explicit CbcWatch(const ExactSettings& settings) : settings_(settings) {}

    void count() { ++effort_; }
    /// Once true, true for ever: a solver that is told to stop may ask again.
    bool mustStop() noexcept {
        if (finishing_) return effort_ >= finishEnd_;
        if (stopped_) return true;
        stopped_ = effort_ >= settings_.budget || wantsStop();
        return stopped_;
    }
    [[nodiscard]] bool stopped() const { return stopped_; }
    [[nodiscard]] std::int64_t effort() const { return effort_; }
    /// From now on only what turns the tree's best point into one of the whole problem is left:
    /// some pivots for which no stop is asked.
    void finish() {
        constexpr std::int64_t enough = 20'000;
        finishing_ = true;
        finishEnd_ = effort_ + enough;
    }
    void rethrow() const {
        if (thrown_) std::rethrow_exception(thrown_);
    }

private:
    bool wantsStop() noexcept {
        constexpr auto interval = std::chrono::milliseconds(20);
        const auto now = std::chrono::steady_clock::now();
        if (now < nextQuestion_) return false;
        nextQuestion_ = now + interval;
        try {
            return settings_.shouldStop && settings_.shouldStop();
        } catch (...) {
            // The solver's frames are not made for foreign exceptions.
            thrown_ = std::current_exception();
            return true;
        }
    }

    const ExactSettings& settings_;
    std::int64_t effort_ = 0;
    std::int64_t finishEnd_ = 0;
    bool stopped_ = false;
    bool finishing_ = false;
    std::chrono::steady_clock::time_point nextQuestion_{};
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

/// Counts nodes.
class NodeEvents final : public CbcEventHandler {
public:
    explicit NodeEvents(CbcWatch& watch) : watch_(&watch) {}
    CbcAction event(CbcEvent which) override {
        if (which == node) watch_->count();
        if (which == solution || which == heuristicSolution || which == beforeSolution1 ||
            which == beforeSolution2) {
            return noAction;
        }
        return watch_->mustStop() ? stop : noAction;
    }
    [[nodiscard]] CbcEventHandler* clone() const override { return new NodeEvents(*this); }

private:
    CbcWatch* watch_;
};

}  // namespace engine
