#include "control/paced_thread.hpp"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <utility>

#include "model/refusal.hpp"

namespace engine {
namespace {

/// How long an urgent end may take, before the job is left behind: what a back end needs for it.
constexpr auto urgentPatience = std::chrono::milliseconds(120);

}  // namespace

/// What the thread and its owner share. Who has the turn has all that is no atomic.
class PacedThread::Work final : public Pace {
public:
    explicit Work(std::function<bool()> mustHold) : mustHold_(std::move(mustHold)) {}

    // On the job's thread.
    void run(const Job& job);
    bool spend(std::int64_t steps) override;
    [[nodiscard]] bool mustEnd() override;
    [[nodiscard]] bool isUrgent() const override { return isUrgent_; }

    // The owner's.
    std::int64_t advance(std::int64_t steps);
    void conclude(bool isUrgent);
    void leaveBehind();
    [[nodiscard]] bool hasEnded() const { return hasEnded_; }
    [[nodiscard]] bool isLeftBehind() const { return isLeftBehind_; }

private:
    void hold();
    /// The caller waits until the job gives the turn back or is left behind.
    /// @param patience  0: without end.
    void letRun(std::chrono::milliseconds patience);
    void rethrow() {
        if (exception_) std::rethrow_exception(std::exchange(exception_, nullptr));
    }

    std::mutex mutex_;  ///< guards isJobsTurn_
    std::condition_variable turnChanges_;
    bool isJobsTurn_ = false;
    std::mutex questionMutex_;  ///< guards mustHold_, which is gone once the job is left behind
    std::function<bool()> mustHold_;
    std::atomic<bool> isLeftBehind_{false};
    std::atomic<bool> isEnding_{false};
    std::atomic<bool> isUrgent_{false};
    std::atomic<bool> hasEnded_{false};
    std::int64_t spent_ = 0;
    std::int64_t allowance_ = 0;  ///< of `spent_`
    std::exception_ptr exception_;
};

void PacedThread::Work::run(const Job& job) {
    {
        std::unique_lock lock(mutex_);
        turnChanges_.wait(lock, [this] { return isJobsTurn_; });
    }
    try {
        if (!isEnding_) job(*this);
    } catch (...) {
        exception_ = std::current_exception();
    }
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
    isJobsTurn_ = false;
    turnChanges_.notify_all();
}

void PacedThread::Work::letRun(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    isJobsTurn_ = true;
    turnChanges_.notify_all();
    const auto isBack = [this] { return !isJobsTurn_ || isLeftBehind_; };
    if (patience.count() == 0) return turnChanges_.wait(lock, isBack);
    if (turnChanges_.wait_for(lock, patience, isBack)) return;
    lock.unlock();
    leaveBehind();
}

/// The job waits until it has the turn again.
void PacedThread::Work::hold() {
    std::unique_lock lock(mutex_);
    if (isLeftBehind_) return;
    isJobsTurn_ = false;
    turnChanges_.notify_all();
    turnChanges_.wait(lock, [this] { return isJobsTurn_; });
}

void PacedThread::Work::leaveBehind() {
    {
        const std::lock_guard lock(mutex_);
        if (!isJobsTurn_) return;
        isEnding_ = isUrgent_ = isLeftBehind_ = true;
        turnChanges_.notify_all();
    }
    const std::lock_guard lock(questionMutex_);
    mustHold_ = nullptr;
}

std::int64_t PacedThread::Work::advance(std::int64_t steps) {
    if (hasEnded_ || isLeftBehind_) return 0;
    const std::int64_t before = spent_;
    allowance_ = before + steps;
    letRun(std::chrono::milliseconds(0));
    if (isLeftBehind_) return 0;
    rethrow();
    return spent_ - before;
}

void PacedThread::Work::conclude(bool isUrgent) {
    if (isLeftBehind_) return;
    isUrgent_ = isUrgent;
    isEnding_ = true;
    if (!hasEnded_) letRun(isUrgent ? urgentPatience : std::chrono::milliseconds(0));
    if (!isLeftBehind_) rethrow();
}

bool PacedThread::Work::spend(std::int64_t steps) {
    if (isEnding_) return false;
    spent_ += steps;
    if (spent_ >= allowance_) hold();
    return !isEnding_;
}

bool PacedThread::Work::mustEnd() {
    if (isEnding_) return true;
    bool mustHold = false;
    {
        const std::lock_guard lock(questionMutex_);
        mustHold = mustHold_ && mustHold_();
    }
    if (mustHold) hold();
    return isEnding_;
}

PacedThread::PacedThread(Job job, std::function<bool()> mustHold)
    : work_(std::make_shared<Work>(std::move(mustHold))) {
    try {
        thread_ = std::thread([work = work_, task = std::move(job)] { work->run(task); });
    } catch (const std::system_error& error) {
        throw Refusal(LS_ERROR_LIMIT,
                      formatText("cannot start a thread for proving: %s", error.what()));
    }
}

PacedThread::~PacedThread() {
    try {
        work_->conclude(/*isUrgent=*/true);
    } catch (...) {
        // Nobody is left to hear of it.
    }
    work_->isLeftBehind() ? thread_.detach() : thread_.join();
}

std::int64_t PacedThread::advance(std::int64_t steps) {
    return work_->advance(steps);
}

void PacedThread::conclude(bool isUrgent) {
    work_->conclude(isUrgent);
}

void PacedThread::leaveBehind() {
    work_->leaveBehind();
}

bool PacedThread::hasEnded() const {
    return work_->hasEnded();
}

bool PacedThread::isLeftBehind() const {
    return work_->isLeftBehind();
}

}  // namespace engine
