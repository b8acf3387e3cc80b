#pragma once

#include "host/services/Threads.hpp"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <thread>
#include <vector>

namespace audlmd {

/// Threads that share jobs with the thread that brings them. Use it for jobs of at least some ten
/// microseconds: to hand out a round of jobs costs about as much.
class WorkerPool {
public:
    /// Starts one thread fewer than `threads`, because the calling thread works too. 0 counts as 1.
    explicit WorkerPool(std::size_t threads);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    /// Calls job(0) to job(count - 1), each once, on any of the threads, and returns when all are done. If
    /// jobs throw, the first exception is rethrown; jobs that have not begun by then are left out.
    void run(std::size_t count, const std::function<void(std::size_t)>& job);

private:
    using Job = std::function<void(std::size_t)>;

    void serve(const std::stop_token& stop);
    /// Takes jobs of the round until none is left.
    void work(const Job& job, std::size_t count) AUDLMD_EXCLUDES(mutex_);
    /// Keeps the first failure of a round.
    void keep(std::exception_ptr failure) AUDLMD_EXCLUDES(mutex_);

    Mutex mutex_;
    std::condition_variable_any started_;
    std::condition_variable finished_;
    std::uint64_t round_ AUDLMD_GUARDED_BY(mutex_) = 0;
    /// The threads, without the calling one, that have not finished the round.
    std::size_t busy_ AUDLMD_GUARDED_BY(mutex_) = 0;
    const Job* job_ AUDLMD_GUARDED_BY(mutex_) = nullptr;
    std::size_t count_ AUDLMD_GUARDED_BY(mutex_) = 0;
    std::exception_ptr failure_ AUDLMD_GUARDED_BY(mutex_);
    /// The next job to take. A thread that comes late takes none of the next round: there is no next round
    /// before all threads have finished this one.
    std::atomic<std::size_t> next_{0};
    /// Declared last: the threads end before anything that they use.
    std::vector<std::jthread> threads_;
};

} // namespace audlmd
