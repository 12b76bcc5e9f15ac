#pragma once

#include <cstdint>
#include <functional>
#include <utility>

namespace engine {

/// Work is reckoned in operand visits, about 10 ns each on a usual machine: what a pass over the
/// model costs for each operand it looks at. It is counted, never timed, so that the same run
/// counts the same everywhere. An iteration, as users see and limit it, is this much work, about 10
/// us.
constexpr std::int64_t workPerIteration = 1000;

/// How a long piece of work is paced: it tells what it spends, and may be held when its share is
/// used up.
///
/// Only on the thread of that work.
class Pace {
public:
    Pace() = default;
    Pace(const Pace&) = delete;
    Pace& operator=(const Pace&) = delete;
    virtual ~Pace() = default;

    /// Counts `work`; waits here when that was the last of the share. To be called often: every
    /// ten milliseconds is fine, every second is not.
    /// @return false: to end with what is in hand.
    virtual bool spend(std::int64_t work) = 0;
    /// Asked at least ten times a second where possible; may wait here. True: to end with what is
    /// in hand. Once true, true for ever.
    [[nodiscard]] virtual bool mustEnd() = 0;
    /// Once mustEnd(): somebody waits, a tenth of a second is what is left; otherwise what is in
    /// hand may be cleaned at leisure.
    [[nodiscard]] virtual bool isUrgent() const { return false; }
};

/// Never holds; ends at a budget, or when told to.
class BudgetPace final : public Pace {
public:
    /// @param budget  work, 0 or more.
    BudgetPace(std::int64_t budget, std::function<bool()> shouldStop)
        : budget_(budget), shouldStop_(std::move(shouldStop)) {}

    bool spend(std::int64_t work) override {
        spent_ += work;
        return spent_ < budget_;
    }
    [[nodiscard]] bool mustEnd() override {
        isStopped_ = isStopped_ || spent_ >= budget_ || shouldStop_();
        return isStopped_;
    }
    [[nodiscard]] std::int64_t spent() const { return spent_; }

private:
    std::int64_t budget_;
    std::int64_t spent_ = 0;
    bool isStopped_ = false;
    std::function<bool()> shouldStop_;
};

}  // namespace engine
