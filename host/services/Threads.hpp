#pragma once

#include <cstddef>
#include <mutex>
#include <pthread.h>
#include <stop_token>
#include <thread>
#include <utility>

// Which mutex guards what, in words that clang++ checks with -Wthread-safety (an error in this tree); g++
// reads over them. They stand behind a member, a function's parameters, or a lambda's.
//
// The compiler goes by names: it takes two expressions for the same mutex where they read the same. Where
// that is too little, a name stands for a mutex, see cacheLock in host/cache/CachedSegment.hpp. The trap: it
// checks neither constructors nor destructors, nor what catch blocks and callers of lambdas hold. Have those
// call a function that takes the mutex.

#if defined(__clang__)
#define AUDLMD_THREAD_SAFETY(attribute) __attribute__((attribute))
#else
#define AUDLMD_THREAD_SAFETY(attribute)
#endif

/// A member that is read and written only while the mutex is held.
#define AUDLMD_GUARDED_BY(mutex) AUDLMD_THREAD_SAFETY(guarded_by(mutex))
/// The same for what a pointer points to.
#define AUDLMD_PT_GUARDED_BY(mutex) AUDLMD_THREAD_SAFETY(pt_guarded_by(mutex))
/// A function that is called only while the mutex is held.
#define AUDLMD_REQUIRES(mutex) AUDLMD_THREAD_SAFETY(requires_capability(mutex))
/// A function that takes the mutex itself, so the caller must not hold it.
#define AUDLMD_EXCLUDES(mutex) AUDLMD_THREAD_SAFETY(locks_excluded(mutex))
/// A function that returns the mutex of this name.
#define AUDLMD_RETURNS_MUTEX(mutex) AUDLMD_THREAD_SAFETY(lock_returned(mutex))
/// A class that can be held.
#define AUDLMD_CAPABILITY AUDLMD_THREAD_SAFETY(capability("mutex"))
/// A function that is not checked, with the reason why it is right all the same.
#define AUDLMD_UNCHECKED(reason) AUDLMD_THREAD_SAFETY(no_thread_safety_analysis)

namespace audlmd {

class AUDLMD_CAPABILITY Mutex {
public:
    void lock() AUDLMD_THREAD_SAFETY(acquire_capability()) { mutex_.lock(); }
    void unlock() AUDLMD_THREAD_SAFETY(release_capability()) { mutex_.unlock(); }

private:
    friend class Lock;
    std::mutex mutex_;
};

/// Holds a mutex until destroyed, but for the time between unlock() and lock(). A std::condition_variable_any
/// waits with the lock itself, a std::condition_variable with native(). Where a condition is a lambda, the
/// lambda says that it requires the mutex.
/// \snippet services.cpp threads
class AUDLMD_THREAD_SAFETY(scoped_lockable) Lock {
public:
    explicit Lock(Mutex& mutex) AUDLMD_THREAD_SAFETY(acquire_capability(mutex)) : lock_(mutex.mutex_) {}
    ~Lock() AUDLMD_THREAD_SAFETY(release_capability()) = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void lock() AUDLMD_THREAD_SAFETY(acquire_capability()) { lock_.lock(); }
    void unlock() AUDLMD_THREAD_SAFETY(release_capability()) { lock_.unlock(); }
    std::unique_lock<std::mutex>& native() { return lock_; }

private:
    std::unique_lock<std::mutex> lock_;
};

/// Starts a thread that calls body(stop token). Its name, a literal, is for debuggers and system monitors.
/// \snippet services.cpp event
template <std::size_t size, class Body>
std::jthread namedThread(const char (&name)[size], Body body) {
    static_assert(size <= 16, "the kernel keeps 15 characters of a thread's name");
    return std::jthread([&name, body = std::move(body)](const std::stop_token& stop) {
        pthread_setname_np(pthread_self(), name);
        body(stop);
    });
}

} // namespace audlmd
