// The rules of making readers and walking segments.

#include "tools/hostcheck/Readers.hpp"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

// The renderer defines these for its hosts. Here it is not loaded.
namespace Aud {
SampleCache::ForwardIterator::ForwardIterator(const ForwardIterator&) = default;
SampleCache::ReverseIterator::ReverseIterator(const ReverseIterator&) = default;
} // namespace Aud

namespace audlmd {
namespace {

using Inside = IteratorInside;

template <class Iterator>
constexpr int stepOf = std::same_as<Iterator, Forward> ? 1 : -1;

/// A reader stands on this sample: inside its segment, and reads it.
template <class Iterator>
void expectAt(const Iterator& reader, std::int64_t sample, std::string_view how) {
    expect(reader.position() == sample, "A ", nameOf<Iterator>, " reader ", how, " sample ", sample,
           " says position ", reader.position(), ".");
    const double read = sampleRead(reader);
    expect(read == static_cast<double>(sample), "A ", nameOf<Iterator>, " reader ", how, " sample ", sample,
           read < 0.0 ? " reads silence." : inWords(" reads sample ", read, "."));
    const std::int32_t length = Inside::segment(reader).length();
    expect(Inside::index(reader) >= 0 && Inside::index(reader) < length, "A ", nameOf<Iterator>, " reader ",
           how, " sample ", sample, " has index ", Inside::index(reader), " in a segment of ", length, ".");
}

template <class Iterator>
void checkStart(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial material = host.add(samples);
    // A reader at each of some thousands of samples, the last one included.
    const std::int64_t step = std::max<std::int64_t>(1, host.length() / 5000);
    for (std::int64_t sample = host.length() - 1; sample >= 0; sample -= step) {
        const auto reader = readerFrom<Iterator>(host, material, sample);
        expectAt(reader, sample, "made for");
        expect(Inside::materialLength(reader) == host.length(), "A ", nameOf<Iterator>,
               " reader takes the material for ", Inside::materialLength(reader), " samples long, which has ",
               host.length(), ".");
    }
}

/// Enters from outside and reads to the other end.
template <class Iterator>
void checkWalk(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial material = host.add(samples);
    const std::int64_t first = stepOf<Iterator> > 0 ? 0 : host.length() - 1;
    auto reader = readerFrom<Iterator>(host, material, first - stepOf<Iterator>);
    int segments = 0;
    for (std::int64_t i = 0; i < host.length(); ++i) {
        const std::int32_t before = Inside::index(reader);
        ++reader;
        const bool isNew = i == 0 || Inside::index(reader) != before + stepOf<Iterator>;
        expectAt(reader, first + i * stepOf<Iterator>, "walked to");
        if (!isNew)
            continue;
        ++segments;
        const std::int32_t edge = stepOf<Iterator> > 0 ? 0 : Inside::segment(reader).length() - 1;
        expect(Inside::index(reader) == edge, "Entering a segment at sample ", reader.position(),
               ", the index is ", Inside::index(reader), " instead of ", edge, ".");
    }
    if (segments < 3)
        throw Unchecked{
            inWords("Only ", segments, " segments were walked: length() must give more samples.")};
}

template <class Iterator>
void checkOutside(HostUnderCheck& host, const CheckedMaterial& material) {
    const auto expectSilence = [](const Iterator& reader) {
        const auto status = Inside::segment(reader).status();
        expect(status != Aud::eSegmentReady && status != Aud::eSegmentRequestOutstanding && *reader == 0.0F,
               "A ", nameOf<Iterator>, " reader at ", reader.position(), ", outside, reads sample ",
               sampleRead(reader), " from a segment of status ", status, ".");
    };
    for (const std::int64_t sample :
         {std::int64_t{-1000}, std::int64_t{-1}, host.length(), host.length() + 1000})
        expectSilence(readerFrom<Iterator>(host, material, sample));
    auto leaving = readerFrom<Iterator>(host, material, stepOf<Iterator> > 0 ? host.length() - 1 : 0);
    static_cast<void>(*leaving);
    ++leaving;
    expectSilence(leaving);
    const Iterator copy(leaving);
    expectSilence(copy);
}

template <class Iterator>
void checkFlags(const CheckedMaterial& material) {
    const bool first = Inside::waits(makeReader<Iterator>(material, 1, true));
    const bool second = Inside::waits(makeReader<Iterator>(material, 1, false));
    expect(first != second, "Every ", nameOf<Iterator>, " reader ",
           first ? "waits" : "goes on without waiting", ", whichever flag it is made with.");
}

template <class Iterator>
void checkOneUnknown(const CheckedMaterial& unknown) {
    const auto expectSilence = [](const Iterator& reader) {
        expect(*reader == 0.0F, "A ", nameOf<Iterator>,
               " reader of a cookie that no material has reads sample ", sampleRead(reader),
               " of another one.");
    };
    try {
        auto reader = makeReader<Iterator>(unknown, 1, false);
        Inside::setWaiting(reader, false);
        for (int i = 0; i < 3; ++i, ++reader)
            expectSilence(reader);
    } catch (const Broken&) {
        throw;
    } catch (...) {
        // Refused: the exception passes through the render call to the host.
    }
}

} // namespace

void checkIdentity(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial first = host.add(samples);
    const CheckedMaterial second = host.add(samples);
    for (const CheckedMaterial& material : {first, second}) {
        const ce_handle copy(material.strip);
        expect(material.strip.get_strip_cookie() == material.cookie &&
                   copy.get_strip_cookie() == material.cookie,
               "The handle names another cookie than the material has.");
    }
    expect(!(first.cookie == second.cookie), "Two materials have one cookie.");
}

void checkEmpty(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial material = host.add(samples);
    checkOutside<Forward>(host, material);
    checkOutside<Reverse>(host, material);
}

void checkStartForwards(HostUnderCheck& host) {
    checkStart<Forward>(host);
}
void checkStartBackwards(HostUnderCheck& host) {
    checkStart<Reverse>(host);
}
void checkWalkForwards(HostUnderCheck& host) {
    checkWalk<Forward>(host);
}
void checkWalkBackwards(HostUnderCheck& host) {
    checkWalk<Reverse>(host);
}

void checkWaiting(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial material = host.add(samples);
    checkFlags<Forward>(material);
    checkFlags<Reverse>(material);
}

void checkGearing(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial material = host.add(samples);
    for (const double speed : {0.0, -1.0, 0.001, 1e9, -1e9})
        for (const unsigned int extra : {0U, 5U, 1000U}) {
            const Orv::OutputGearing gearing{speed};
            auto forward = makeReader<Forward>(material, 0, true, gearing, extra);
            auto reverse = makeReader<Reverse>(material, host.reversePosition(0), true, gearing);
            Inside::setWaiting(forward, true);
            Inside::setWaiting(reverse, true);
            expectAt(forward, 0, inWords("made at speed ", speed, " for"));
            expectAt(reverse, 0, inWords("made at speed ", speed, " for"));
        }
}

void checkUnknown(HostUnderCheck& host) {
    const auto samples = ramp(host);
    CheckedMaterial unknown = host.add(samples);
    unknown.cookie.channel = 60'000;
    unknown.cookie.kind = 200;
    checkOneUnknown<Forward>(unknown);
    checkOneUnknown<Reverse>(unknown);
}

} // namespace audlmd
