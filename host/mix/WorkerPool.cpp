#include "host/mix/WorkerPool.hpp"

#include <utility>

namespace audlmd {

WorkerPool::WorkerPool(std::size_t threads) {
    for (std::size_t i = 1; i < threads; ++i)
        threads_.push_back(namedThread("audlmd-mixer", [this](const std::stop_token& stop) { serve(stop); }));
}

/// Asked to stop all at once, the threads end side by side.
WorkerPool::~WorkerPool() {
    for (std::jthread& thread : threads_)
        thread.request_stop();
}

void WorkerPool::run(std::size_t count, const std::function<void(std::size_t)>& job) {
    if (threads_.empty() || count < 2) {
        for (std::size_t i = 0; i < count; ++i)
            job(i);
        return;
    }
    {
        const Lock lock(mutex_);
        job_ = &job;
        count_ = count;
        next_.store(0, std::memory_order_relaxed);
        busy_ = threads_.size();
        ++round_;
    }
    started_.notify_all();
    work(job, count);
    Lock lock(mutex_);
    finished_.wait(lock.native(), [this]() AUDLMD_REQUIRES(mutex_) { return busy_ == 0; });
    if (const auto failure = std::exchange(failure_, nullptr))
        std::rethrow_exception(failure);
}

void WorkerPool::serve(const std::stop_token& stop) {
    std::uint64_t done = 0;
    Lock lock(mutex_);
    while (started_.wait(lock, stop, [&]() AUDLMD_REQUIRES(mutex_) { return round_ != done; })) {
        done = round_;
        const Job& job = *job_;
        const std::size_t count = count_;
        lock.unlock();
        work(job, count);
        lock.lock();
        if (--busy_ == 0)
            finished_.notify_one();
    }
}

void WorkerPool::work(const Job& job, std::size_t count) {
    try {
        for (std::size_t i = 0; (i = next_.fetch_add(1, std::memory_order_relaxed)) < count;)
            job(i);
    } catch (...) {
        // No thread takes another job.
        next_.store(count, std::memory_order_relaxed);
        keep(std::current_exception());
    }
}

void WorkerPool::keep(std::exception_ptr failure) {
    const Lock lock(mutex_);
    if (failure_ == nullptr)
        failure_ = std::move(failure);
}

} // namespace audlmd
