#pragma once

#include "model/Host.hpp"

#include <cstdint>
#include <vector>

namespace audlmd::model {

/// The sum modulo two to the width.
template <class Integer>
constexpr Integer wrap(Integer value, std::int64_t addend) {
    return static_cast<Integer>(static_cast<std::uint64_t>(value) + static_cast<std::uint64_t>(addend));
}

/// A handle to a segment. The host is told of every handle that is made, copied, assigned and destroyed.
class Segment {
public:
    /// The host makes handles inside its own iterator, the library only empty ones.
    enum class Maker { host, library };

    Segment(Host& host, int number, Maker maker) : host_(&host), number_(number) {
        maker == Maker::host ? host_->adoptSegment() : host_->makeSegment();
    }
    Segment(const Segment& other) : host_(other.host_), number_(other.number_) {
        host_->copySegment(number_);
    }
    // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): the host counts one to itself too
    Segment& operator=(const Segment& other) {
        host_->assignSegment(number_, other.number_);
        number_ = other.number_;
        return *this;
    }
    ~Segment() { host_->destroySegment(number_); }

    int number() const { return number_; }
    /// The host itself lets the handle refer to another segment, which is no operation of the library.
    void rebind(int number) { number_ = number; }

private:
    Host* host_;
    int number_;
};

/// One copy of the host's source iterator, with what the library does to read it and to step it. Outside the
/// material it reads silence.
struct Source {
    Source(Host& theHost, const SourceRequest& request)
        : host(theHost), forward(request.forward), position(request.position), length(host.materialLength()),
          place(host.makeSource(request)), current(host, place.segment, Segment::Maker::host),
          waits(request.flag) {
        held.reserve(request.extra); // Growing would copy handles.
        for (std::uint32_t i = 0; i < request.extra; ++i)
            held.emplace_back(host, static_cast<int>(i), Segment::Maker::host);
    }
    Source(const Source&) = default;
    Source& operator=(const Source&) = delete;
    ~Source() { host.destroySource(forward); }

    /// The current sample. The status is asked for twice, before and after the wait; a sample that is missing
    /// inside the material is 0 and counts as an underrun.
    float read() const {
        const int segment = current.number();
        if (host.status(segment) == 2 && waits)
            waitFor(segment);
        if (host.status(segment) == 1)
            return host.samples(segment)[place.index];
        if (0 <= position && position < length)
            host.countUnderrun();
        return 0.0F;
    }

    /// Moves on by one source sample, forwards or backwards. Positions may wrap.
    void step() {
        const std::int64_t old = position;
        position = wrap(old, forward ? 1 : -1);
        if (forward)
            stepForward();
        else
            stepReverse(old);
    }

    Host& host;
    bool forward;
    std::int64_t position;
    std::int64_t length;
    Place place;
    Segment current;
    bool waits;
    std::vector<Segment> held;

private:
    /// The event is given back also when the wait throws.
    void waitFor(int segment) const {
        struct Event {
            Event(Host& theHost, int number) : host(theHost) { host.requestEvent(number); }
            Event(const Event&) = delete;
            Event& operator=(const Event&) = delete;
            ~Event() { host.releaseEvent(); }
            Host& host;
        } event(host, segment);
        host.wait(segment, 0xFFFFFFFF);
    }

    void moveTo(Place there) {
        place = there;
        current.rebind(there.segment);
    }

    void leave() { current = Segment(host, -1, Segment::Maker::library); }

    /// Entering the material is tested before leaving it: even a material of length 0 is entered at position
    /// 0. On a segment of unknown length (status 7) the iterator stays.
    void stepForward() {
        if (position < 0 || position > length)
            return;
        if (position == 0)
            return moveTo(host.hitFirst());
        if (position == length)
            return leave();
        place.index = wrap(place.index, 1);
        if (host.status(current.number()) == 7)
            return;
        if (place.index >= host.length(current.number()))
            moveTo(host.moveForward(place.segment));
    }

    /// Asks for neither the status nor the length. Only the index -1 exactly moves to the segment before.
    void stepReverse(std::int64_t old) {
        if (position < -1 || position >= length)
            return;
        if (old == length)
            return moveTo(host.hitLast());
        if (position == -1)
            return leave();
        place.index = wrap(place.index, -1);
        if (place.index == -1)
            moveTo(host.moveReverse(place.segment));
    }
};

} // namespace audlmd::model
