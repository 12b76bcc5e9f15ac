#include "control/paced_thread.hpp"

#include <system_error>
#include <utility>

#include "model/refusal.hpp"

namespace engine {

PacedThread::PacedThread(Job job, std::function<bool()> mustHold) : mustHold_(std::move(mustHold)) {
    try {
        thread_ = std::thread([this, task = std::move(job)] { work(task); });
    } catch (const std::system_error& error) {
        throw Refusal(LS_ERROR_LIMIT,
                      formatText("cannot start a thread for proving: %s", error.what()));
    }
}

PacedThread::~PacedThread() {
    isEnding_ = isUrgent_ = true;
    if (!hasEnded_) letRun();
    thread_.join();
}

void PacedThread::work(const Job& job) {
    {
        std::unique_lock lock(mutex_);
        turnChanges_.wait(lock, [this] { return isJobsTurn_; });
    }
    try {
        if (!isEnding_) job(*this);
    } catch (...) {
        exception_ = std::current_exception();
    }
    hasEnded_ = true;
    const std::lock_guard lock(mutex_);
    isJobsTurn_ = false;
    turnChanges_.notify_all();
}

/// The caller waits until the job gives the turn back.
void PacedThread::letRun() {
    std::unique_lock lock(mutex_);
    isJobsTurn_ = true;
    turnChanges_.notify_all();
    turnChanges_.wait(lock, [this] { return !isJobsTurn_; });
}

/// The job waits until it has the turn again.
void PacedThread::hold() {
    std::unique_lock lock(mutex_);
    isJobsTurn_ = false;
    turnChanges_.notify_all();
    turnChanges_.wait(lock, [this] { return isJobsTurn_; });
}

std::int64_t PacedThread::advance(std::int64_t steps) {
    if (hasEnded_) return 0;
    const std::int64_t before = spent_;
    allowance_ = before + steps;
    letRun();
    if (exception_) std::rethrow_exception(std::exchange(exception_, nullptr));
    return spent_ - before;
}

void PacedThread::conclude(bool isUrgent) {
    isEnding_ = true;
    isUrgent_ = isUrgent;
    if (!hasEnded_) letRun();
    if (exception_) std::rethrow_exception(std::exchange(exception_, nullptr));
}

bool PacedThread::spend(std::int64_t steps) {
    spent_ += steps;
    if (spent_ >= allowance_ && !isEnding_) hold();
    return !isEnding_;
}

bool PacedThread::mustEnd() {
    if (!isEnding_ && mustHold_()) hold();
    return isEnding_;
}

}  // namespace engine
