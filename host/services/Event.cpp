#include "host/services/Event.hpp"

#include <chrono>

namespace audlmd {

bool Event::wait(std::uint32_t timeOutMilliseconds) {
    Lock lock(mutex_);
    // The flag decides, not the waking: a thread may wake without a signal, and a signal may come before the
    // wait.
    const auto isSignalled = [this]() AUDLMD_REQUIRES(mutex_) { return signalled_; };
    if (timeOutMilliseconds != noTimeLimit)
        return changed_.wait_for(lock.native(), std::chrono::milliseconds(timeOutMilliseconds), isSignalled);
    changed_.wait(lock.native(), isSignalled);
    return true;
}

void Event::signal() {
    const Lock lock(mutex_);
    signalled_ = true;
    // Under the lock, so that no waiter can return between the flag and the notification.
    changed_.notify_all();
}

} // namespace audlmd
