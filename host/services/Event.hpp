#pragma once

#include "contract/ThreadEvent.hpp"
#include "host/services/Threads.hpp"
#include "ole/Orv/Ptr.hpp"

#include <chrono>
#include <condition_variable>
#include <cstdint>

namespace audlmd {

/// Something that happens once, such as the end of a loading. Threads that wait for it sleep until another
/// thread signals it. An event that was signalled stays signalled: a wait that begins later returns at once.
///
/// Make an event as EventPtr(new Event): its last holder destroys it. Thread safe.
/// \snippet services.cpp event
class Event final : public iThreadEvent {
public:
    /// Returns whether the event is signalled. The time limit is in milliseconds; noTimeLimit waits for as
    /// long as it takes. A limit of 0 asks without sleeping. Trap: the result of a wait with a limit must be
    /// looked at.
    bool wait(std::uint32_t timeOutMilliseconds) override {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeOutMilliseconds);
        Lock lock(mutex_);
        // The flag decides, not the waking: a thread may wake without a signal, and a signal may come before
        // the wait.
        while (!signalled_)
            if (timeOutMilliseconds == noTimeLimit)
                changed_.wait(lock.native());
            else if (changed_.wait_until(lock.native(), end) == std::cv_status::timeout)
                return signalled_;
        return true;
    }

    /// Wakes all threads that wait. The trap: the caller must hold the event until this returns, because a
    /// thread that wakes may let go of the event at once. Signalling twice does no harm.
    void signal() {
        const Lock lock(mutex_);
        signalled_ = true;
        // Under the lock, so that no waiter can return between the flag and the notification.
        changed_.notify_all();
    }

private:
    Mutex mutex_;
    std::condition_variable changed_;
    /// Never becomes false again.
    bool signalled_ AUDLMD_GUARDED_BY(mutex_) = false;
};

/// The count of holders lies inside the event, so a pointer can be made from a plain pointer again.
using EventPtr = Orv::Ptr<Event, Orv::DtorTraits, Orv::InternalRefCountTraits>;

} // namespace audlmd
