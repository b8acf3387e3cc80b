#pragma once

#include "host/ThreadEvent.hpp"
#include "ole/Orv/Ptr.hpp"

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace audlmd {

/// An event that really blocks: threads that wait sleep until another thread signals it. Once signalled, it
/// stays so. Make it as EventPtr(new Event); the last holder destroys it.
class Event final : public iThreadEvent {
public:
    bool wait(std::uint32_t timeOutMilliseconds) override;

    /// Wakes all who wait. Whoever signals must hold the event until this returns.
    void signal();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool signalled_ = false;
};

using EventPtr = Orv::Ptr<Event, Orv::DtorTraits, Orv::InternalRefCountTraits>;

} // namespace audlmd
