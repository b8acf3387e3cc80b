// Compiles with -Wthread-safety as it stands, and must not with AUDLMD_ACCESS: an access without the lock.

#include "host/services/Threads.hpp"

#include <condition_variable>

#ifndef AUDLMD_ACCESS
#define AUDLMD_ACCESS
#endif

namespace audlmd::test {

class Guarded {
public:
    void access() {
        {
            Lock lock(mutex_);
            changed_.wait(lock, [this]() AUDLMD_REQUIRES(mutex_) { return member_ != 0; });
            notified_.wait(lock.native(), [this]() AUDLMD_REQUIRES(mutex_) { return member_ != 0; });
            step();
            lock.unlock();
            // Here nobody holds the mutex.
            AUDLMD_ACCESS;
            lock.lock();
            step();
        }
        outside();
    }

private:
    void step() AUDLMD_REQUIRES(mutex_) { *pointed_ = member_ + 1; }
    void outside() AUDLMD_EXCLUDES(mutex_) { const Lock lock(mutex_); }

    Mutex mutex_;
    std::condition_variable_any changed_;
    std::condition_variable notified_;
    int member_ AUDLMD_GUARDED_BY(mutex_) = 0;
    int* pointed_ AUDLMD_PT_GUARDED_BY(mutex_) = &member_;
};

} // namespace audlmd::test
