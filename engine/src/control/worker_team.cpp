#include "control/worker_team.hpp"

#include <system_error>
#include <utility>

#include "model/refusal.hpp"

namespace engine {

WorkerTeam::WorkerTeam(int nbWorkers) {
    exceptions_.resize(static_cast<std::size_t>(nbWorkers));
    threads_.reserve(static_cast<std::size_t>(nbWorkers));
    try {
        for (int k = 0; k < nbWorkers; ++k) threads_.emplace_back([this, k] { work(k); });
    } catch (const std::system_error& error) {
        shutDown();
        throw Refusal(LS_ERROR_LIMIT,
                      formatText("cannot start %d search threads: %s", nbWorkers, error.what()));
    } catch (...) {
        shutDown();  // a thread that runs must not be destroyed
        throw;
    }
}

WorkerTeam::~WorkerTeam() {
    shutDown();
}

void WorkerTeam::shutDown() {
    {
        const std::lock_guard lock(mutex_);
        isOver_ = true;
        isPaused_ = false;
    }
    workersWake_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

void WorkerTeam::work(int worker) {
    std::unique_lock lock(mutex_);
    for (std::int64_t roundsSeen = 0;;) {
        workersWake_.wait(lock, [&] { return isOver_ || round_ > roundsSeen; });
        if (isOver_) return;
        roundsSeen = round_;
        if (worker >= nbInvited_) continue;
        lock.unlock();
        std::exception_ptr exception;
        try {
            job_(worker);
        } catch (...) {
            exception = std::current_exception();
        }
        lock.lock();
        exceptions_[static_cast<std::size_t>(worker)] = std::move(exception);
        --nbActive_;
        if (nbActive_ == nbParked_) solveThreadWakes_.notify_all();
    }
}

void WorkerTeam::start(int nbWorkers, Job job) {
    {
        const std::lock_guard lock(mutex_);
        job_ = std::move(job);
        nbInvited_ = nbWorkers;
        nbActive_ = nbWorkers;
        ++round_;
    }
    workersWake_.notify_all();
}

bool WorkerTeam::waitUntil(Clock::time_point time) {
    std::unique_lock lock(mutex_);
    return solveThreadWakes_.wait_until(lock, time, [this] { return nbActive_ == 0; });
}

void WorkerTeam::finish() {
    std::unique_lock lock(mutex_);
    solveThreadWakes_.wait(lock, [this] { return nbActive_ == 0; });
    std::exception_ptr first;
    for (std::exception_ptr& exception : exceptions_) {
        if (!first) first = exception;
        exception = nullptr;
    }
    if (first) std::rethrow_exception(first);
}

void WorkerTeam::pause(Clock::duration patience) {
    std::unique_lock lock(mutex_);
    isPaused_ = true;
    solveThreadWakes_.wait_for(lock, patience, [this] { return nbActive_ == nbParked_; });
}

void WorkerTeam::resume() {
    {
        const std::lock_guard lock(mutex_);
        isPaused_ = false;
    }
    workersWake_.notify_all();
}

void WorkerTeam::parkIfPaused() {
    std::unique_lock lock(mutex_);
    if (!isPaused_) return;
    ++nbParked_;
    if (nbActive_ == nbParked_) solveThreadWakes_.notify_all();
    workersWake_.wait(lock, [this] { return !isPaused_; });
    --nbParked_;
}

}  // namespace engine
