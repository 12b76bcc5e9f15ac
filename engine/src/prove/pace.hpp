#pragma once

#include <cstdint>
#include <functional>
#include <utility>

namespace engine {

/// How a long proof is paced: it tells what it spends, and may be held when its share is used up.
///
/// Only on the proof's own thread.
class Pace {
public:
    Pace() = default;
    Pace(const Pace&) = delete;
    Pace& operator=(const Pace&) = delete;
    virtual ~Pace() = default;

    /// Counts `steps` (nodes and pivots); waits here when they were the last of the share.
    /// @return false: the proof is to end with what it has in hand.
    virtual bool spend(std::int64_t steps) = 0;
    /// Asked at least ten times a second where possible; may wait here. True: the proof is to end
    /// with what it has in hand. Once true, true for ever.
    [[nodiscard]] virtual bool mustEnd() = 0;
};

/// Never holds; ends at a budget, or when told to.
class BudgetPace final : public Pace {
public:
    /// @param budget  steps, 0 or more.
    BudgetPace(std::int64_t budget, std::function<bool()> shouldStop)
        : budget_(budget), shouldStop_(std::move(shouldStop)) {}

    bool spend(std::int64_t steps) override {
        spent_ += steps;
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
