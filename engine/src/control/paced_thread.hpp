#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <thread>

#include "evaluate/pace.hpp"

namespace engine {

/// A job on a thread of its own that runs only while somebody waits for it, share by share.
///
/// It stops where it stands when a share is spent and goes on from there with the next one: so a
/// solver that cannot return in the middle of its work takes turns with others, and nothing is done
/// twice. Where it stops depends on what it counts alone, not on the clock. While nobody waits the
/// job rests, and whoever waited may read and write what the job works on.
///
/// A job that asks the pace too seldom can be left behind: nobody waits for it any more, it ends
/// by itself when it asks next, and what it works on is its own from then on.
class PacedThread final {
public:
    /// Owns what it works on, or shares it: it may outlive this when it is left behind.
    using Job = std::function<void(Pace&)>;

    /// @param mustHold  asked on the job's thread several times a second; true holds it at once.
    /// Refused (as a Refusal) when the system has no more threads.
    PacedThread(Job job, std::function<bool()> mustHold);
    PacedThread(const PacedThread&) = delete;
    PacedThread& operator=(const PacedThread&) = delete;
    /// Tells the job to end and waits for it, unless it is left behind.
    ~PacedThread();

    /// Lets the job spend `steps` more and waits until it has, is held, ends, or is left behind.
    /// @return what it has spent; more than `steps` only where the job counts in larger pieces.
    /// Throws what the job has thrown.
    std::int64_t advance(std::int64_t steps);
    /// Tells the job to end with what it has in hand, and waits for it.
    /// @param isUrgent  at once, rather than as well as it can; a job that takes longer than a
    /// tenth
    ///                  of a second for that is left behind.
    void conclude(bool isUrgent);
    /// Leaves the job behind if it has the turn; whoever waits for it returns. From any thread.
    void leaveBehind();
    [[nodiscard]] bool hasEnded() const;
    [[nodiscard]] bool isLeftBehind() const;

private:
    class Work;

    std::shared_ptr<Work> work_;  ///< shared with the thread
    std::thread thread_;          ///< detached when it is left behind
};

}  // namespace engine
