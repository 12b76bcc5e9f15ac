#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

#include "evaluate/pace.hpp"

namespace engine {

/// A job on a thread of its own that runs only while somebody waits for it, share by share.
///
/// It stops where it stands when a share is spent and goes on from there with the next one: so a
/// solver that cannot return in the middle of its work takes turns with others, and nothing is done
/// twice. Where it stops depends on what it counts alone, not on the clock. While nobody waits the
/// job rests, and whoever waited may read and write what the job works on.
class PacedThread final : private Pace {
public:
    using Job = std::function<void(Pace&)>;

    /// @param mustHold  asked on the job's thread several times a second; true holds it at once.
    /// Refused (as a Refusal) when the system has no more threads.
    PacedThread(Job job, std::function<bool()> mustHold);
    /// Tells the job to end and waits for it.
    ~PacedThread() override;

    /// Lets the job spend `steps` more and waits until it has, is held, or ends.
    /// @return what it has spent; more than `steps` only where the job counts in larger pieces.
    /// Throws what the job has thrown.
    std::int64_t advance(std::int64_t steps);
    /// Tells the job to end with what it has in hand, and waits for it.
    /// @param isUrgent  at once, rather than as well as it can.
    void conclude(bool isUrgent);
    [[nodiscard]] bool hasEnded() const { return hasEnded_; }

private:
    bool spend(std::int64_t steps) override;
    [[nodiscard]] bool mustEnd() override;
    [[nodiscard]] bool isUrgent() const override { return isUrgent_; }

    void work(const Job& job);
    void hold();
    void letRun();

    std::function<bool()> mustHold_;
    std::mutex mutex_;  ///< guards isJobsTurn_; who has the turn has all below
    std::condition_variable turnChanges_;
    bool isJobsTurn_ = false;
    bool isEnding_ = false;
    bool isUrgent_ = false;
    bool hasEnded_ = false;
    std::int64_t spent_ = 0;
    std::int64_t allowance_ = 0;  ///< of `spent_`
    std::exception_ptr exception_;
    std::thread thread_;  ///< last: starts when all else stands
};

}  // namespace engine
