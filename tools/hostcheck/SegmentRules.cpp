// The rules of what changes while readers stand on segments: status, events, underruns, holders.

#include "ole/Orv/Ptr.hpp"
#include "tools/hostcheck/Readers.hpp"

#include <chrono>
#include <functional>
#include <memory>
#include <thread>

namespace audlmd {
namespace {

using Aud::SampleCacheSegment;
using Inside = IteratorInside;

constexpr std::uint32_t patienceMilliseconds = 5000;

/// Whether it comes true before the patience ends.
template <class Condition>
bool comesTrue(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(patienceMilliseconds);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// A material whose samples are late, or the word that there is none.
CheckedMaterial lateMaterial(HostUnderCheck& host, const std::vector<float>& samples) {
    const std::optional<CheckedMaterial> late = host.addLate(samples);
    if (!late)
        throw Unchecked{"addLate() makes nothing: the host says that its samples are never late."};
    return *late;
}

/// The first segment, requested by a reader that does not wait.
SampleCacheSegment requestedSegment(HostUnderCheck& host, const CheckedMaterial& late) {
    const auto reader = readerFrom<Forward>(host, late, 0, false);
    const SampleCacheSegment segment = Inside::segment(reader);
    expect(comesTrue([&] { return segment.status() == Aud::eSegmentRequestOutstanding; }),
           "A reader stands on a late segment, whose status is ", segment.status(), " instead of ",
           Aud::eSegmentRequestOutstanding, ".");
    return segment;
}

} // namespace

void checkStatus(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial late = lateMaterial(host, samples);
    const SampleCacheSegment segment = requestedSegment(host, late);
    const SampleCacheSegment copy(segment);
    std::jthread loading([&] { host.load(late); });
    expect(comesTrue([&] { return segment.status() == Aud::eSegmentReady; }),
           "The samples have arrived, and the status stays at ", segment.status(), ".");
    expect(copy.status() == Aud::eSegmentReady && copy.pSamples() == segment.pSamples(),
           "A copy of the handle does not share the segment.");
    expect(segment.pSamples() != nullptr && segment.length() >= 1 && segment.length() <= host.length(),
           "A ready segment has ", segment.length(), " samples",
           segment.pSamples() == nullptr ? " at no address." : ".");
    for (std::int32_t i = 0; i < segment.length(); ++i)
        expect(segment.pSamples()[i] == samples[static_cast<std::size_t>(i)], "Sample ", i,
               " of a segment that has just become ready is another one.");
}

void checkEvents(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial late = lateMaterial(host, samples);
    const SampleCacheSegment segment = requestedSegment(host, late);
    const ThreadEventPtr event = segment.getRequestCompletedEvent();
    expect(static_cast<bool>(event), "A requested segment has no event.");
    const std::int32_t holders = event->referenceCount;
    expect(holders >= 1, "An event that is held counts ", holders, " holders.");
    for (int i = 0; i < 3; ++i) {
        const ThreadEventPtr again = segment.getRequestCompletedEvent();
        const std::int32_t expected = &*again == &*event ? holders + 1 : holders;
        expect(event->referenceCount == expected, "The event counts ", event->referenceCount,
               " holders instead of ", expected, ".");
    }
    expect(event->referenceCount == holders, "Three handles were given back, and the event counts ",
           event->referenceCount, " holders instead of ", holders, ".");
    expect(!event->wait(0), "The event has happened before the samples arrived.");
    std::jthread loading([&] { host.load(late); });
    expect(event->wait(patienceMilliseconds), "The samples have arrived, and the event does not happen.");
    expect(event->wait(0) && event->wait(iThreadEvent::noTimeLimit),
           "An event that has happened is forgotten.");
}

void checkUnderruns(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial late = lateMaterial(host, samples);
    // At the end, so that no loader of the host is left waiting.
    const std::unique_ptr<HostUnderCheck, std::function<void(HostUnderCheck*)>> arriving(
        &host, [&](HostUnderCheck*) { host.load(late); });
    const auto expectUnderruns = [&](std::uint64_t expected) {
        expect(host.underruns(late) == expected, "After ", expected, " late samples the host has counted ",
               host.underruns(late), ".");
    };
    auto forward = readerFrom<Forward>(host, late, 0, false);
    expect(*forward == 0.0F, "A late sample is no silence.");
    ++forward;
    expectUnderruns(1);
    expect(*forward == 0.0F, "A late sample is no silence.");
    expectUnderruns(2);
    const auto reverse = readerFrom<Reverse>(host, late, 1, false);
    expect(*reverse == 0.0F, "A late sample is no silence.");
    expectUnderruns(3);
}

void checkHolders(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial material = host.add(samples);
    {
        SampleCacheSegment last;
        {
            auto forward = readerFrom<Forward>(host, material, 1);
            const auto reverse = readerFrom<Reverse>(host, material, 1);
            expect(sampleRead(forward) == 1.0 && sampleRead(reverse) == 1.0, "Readers do not read sample 1.");
            Forward stepped(forward);
            const Reverse copied(reverse);
            ++stepped;
            expect(sampleRead(stepped) == 2.0 && sampleRead(forward) == 1.0 && sampleRead(copied) == 1.0,
                   "A reader and its copy do not step apart.");
            last = Inside::segment(stepped);
            const SampleCacheSegment& itself = last;
            last = itself;
            SampleCacheSegment other(last);
            other = Inside::segment(reverse);
            host.remove(material);
            expect(host.exists(material), "The samples have gone, on which readers stand.");
        }
        expect(host.exists(material), "The samples have gone, of which a handle is held.");
        expect(last.pSamples()[0] == samples[0], "The samples of a handle that is held have changed.");
    }
    expect(comesTrue([&] { return !host.exists(material); }),
           "The material is removed and its last handle has gone, and the samples are kept.");
}

} // namespace audlmd
