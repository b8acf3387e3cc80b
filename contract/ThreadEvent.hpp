#pragma once

#include <cstdint>

namespace Orv {

template <class T, class DestructionTraits, class RefCountTraits>
class Ptr;
struct DtorTraits;
struct InternalRefCountTraits;

} // namespace Orv

/// Something that happens once, and that threads can wait for.
/// \snippet minimal_host.cpp event
class iThreadEvent {
public:
    /// As a time-out: wait for as long as it takes.
    static constexpr std::uint32_t noTimeLimit = 0xFFFFFFFF;

    virtual ~iThreadEvent() = default;

    /// Blocks until the event is signalled or the time, in milliseconds, is up. Returns whether the event is
    /// signalled.
    virtual bool wait(std::uint32_t timeOutMilliseconds) = 0;

    /// Holders of the event; only iReferenceCounts changes it.
    std::int32_t referenceCount = 0;
};

using ThreadEventPtr = Orv::Ptr<iThreadEvent, Orv::DtorTraits, Orv::InternalRefCountTraits>;
