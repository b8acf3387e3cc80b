#pragma once

#include <compare>
#include <concepts>
#include <cstdint>
#include <ostream>

namespace audlmd {

// Four clocks count samples, at two rates. Samples of the source: a material counts from its own start, a
// range from the sample that is delivered first, whatever the direction. Samples of the output: a strip
// counts from its own start, a timeline from the start of the whole. docs/architecture.md has a picture.

struct SourceRate;
struct OutputRate;
struct MaterialClock {
    using Rate = SourceRate;
};
struct RangeClock {
    using Rate = SourceRate;
};
struct OutputClock {
    using Rate = OutputRate;
};
struct TimelineClock {
    using Rate = OutputRate;
};

/// How far two samples of a clock are apart. Clocks of one rate have their distances in common. Reads as a
/// number, and moves no sample of the other rate.
template <class Rate>
class Distance {
public:
    constexpr Distance() = default;
    template <std::integral Number>
    constexpr Distance(Number samples) : samples_(static_cast<std::int64_t>(samples)) {}
    constexpr operator std::int64_t() const { return samples_; }

private:
    std::int64_t samples_ = 0;
};

/// A sample, by its number on a clock. A number becomes a sample where one is wanted. A sample never becomes
/// a sample of another clock, and a number only where asked.
/// \snippet signal.cpp clocks
template <class Clock>
class Sample {
public:
    constexpr Sample() = default;
    template <std::integral Number>
    constexpr Sample(Number number) : number_(static_cast<std::int64_t>(number)) {}
    /// On the clock.
    constexpr std::int64_t number() const { return number_; }

    // NOLINTNEXTLINE(modernize-use-nullptr): a comparison with the 0 that the compiler writes
    friend constexpr auto operator<=>(Sample, Sample) = default;

    friend constexpr Sample operator+(Sample sample, Distance<typename Clock::Rate> distance) {
        return sample.number_ + distance;
    }
    friend constexpr Sample operator-(Sample sample, Distance<typename Clock::Rate> distance) {
        return sample.number_ - distance;
    }
    template <std::integral Number>
    friend constexpr Sample operator-(Sample sample, Number samples) {
        return sample.number_ - static_cast<std::int64_t>(samples);
    }
    friend constexpr Distance<typename Clock::Rate> operator-(Sample left, Sample right) {
        return left.number_ - right.number_;
    }
    constexpr Sample& operator+=(Distance<typename Clock::Rate> distance) { return *this = *this + distance; }
    constexpr Sample& operator++() { return *this += 1; }

    friend std::ostream& operator<<(std::ostream& out, Sample sample) { return out << sample.number_; }

private:
    std::int64_t number_ = 0;
};

using MaterialSample = Sample<MaterialClock>;
using RangeSample = Sample<RangeClock>;
/// Of a strip.
using OutputSample = Sample<OutputClock>;
using TimelineSample = Sample<TimelineClock>;

/// Neighbouring samples. Sample `to` is excluded.
/// \snippet signal.cpp clocks
template <class Clock>
struct Span {
    Sample<Clock> from;
    Sample<Clock> to;

    /// In samples of the clock; negative where `to` lies before `from`.
    constexpr Distance<typename Clock::Rate> length() const { return to - from; }
    constexpr bool isEmpty() const { return to <= from; }

    friend constexpr bool operator==(const Span&, const Span&) = default;
};

using MaterialSpan = Span<MaterialClock>;
using RangeSpan = Span<RangeClock>;
using TimelineSpan = Span<TimelineClock>;

} // namespace audlmd
