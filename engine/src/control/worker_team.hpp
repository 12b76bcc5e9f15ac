#pragma once

#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace engine {

/// Threads that run one job at a time for the solve thread, which meanwhile keeps its hands free
/// for ticks. All functions are the solve thread's, but parkIfPaused.
///
/// An exception in a worker ends that worker's part of the job and is thrown by finish().
class WorkerTeam {
public:
    using Clock = std::chrono::steady_clock;
    /// @param worker  0-based, below the number of workers of the job.
    using Job = std::function<void(int worker)>;

    /// Refused (as a Refusal) when the system has no more threads.
    explicit WorkerTeam(int nbWorkers);
    /// Waits for the job under way.
    ~WorkerTeam();
    WorkerTeam(const WorkerTeam&) = delete;
    WorkerTeam& operator=(const WorkerTeam&) = delete;

    [[nodiscard]] int nbWorkers() const { return static_cast<int>(threads_.size()); }

    /// Starts `job` on the first `nbWorkers` workers. Only when no job is under way.
    void start(int nbWorkers, Job job);
    /// @return whether the job has ended.
    bool waitUntil(Clock::time_point time);
    /// Waits for the end of the job and throws the exception of the first worker that has one.
    void finish();

    /// Asks the workers to park and waits until all have parked or ended, `patience` at most.
    void pause(Clock::duration patience);
    void resume();
    /// For a worker inside a job: waits here while the team is paused.
    void parkIfPaused();

private:
    void work(int worker);
    void shutDown();

    std::mutex mutex_;  ///< guards all below but threads_
    std::condition_variable workersWake_;
    std::condition_variable solveThreadWakes_;
    Job job_;
    std::int64_t round_ = 0;  ///< number of jobs started
    int nbInvited_ = 0;       ///< workers of this job
    int nbActive_ = 0;        ///< of them, not yet ended
    int nbParked_ = 0;
    bool isPaused_ = false;
    bool isOver_ = false;
    std::vector<std::exception_ptr> exceptions_;  ///< [nbWorkers]
    std::vector<std::thread> threads_;
};

}  // namespace engine
