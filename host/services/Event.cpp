#include "host/services/Event.hpp"

#include <chrono>

namespace audlmd {

bool Event::wait(std::uint32_t timeOutMilliseconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeOutMilliseconds);
    Lock lock(mutex_);
    // The flag decides, not the waking: a thread may wake without a signal, and a signal may come before the
    // wait.
    while (!signalled_)
        if (timeOutMilliseconds == noTimeLimit)
            changed_.wait(lock.native());
        else if (changed_.wait_until(lock.native(), end) == std::cv_status::timeout)
            return signalled_;
    return true;
}

void Event::signal() {
    const Lock lock(mutex_);
    signalled_ = true;
    // Under the lock, so that no waiter can return between the flag and the notification.
    changed_.notify_all();
}

} // namespace audlmd
