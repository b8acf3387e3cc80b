#include "host/mix/Reporting.hpp"

#include "host/signal/BlockLoops.hpp"

#include <algorithm>
#include <vector>

namespace audlmd {
namespace {

bool hasProblems(const StripReport& report) {
    return !report.failure.empty() || report.underrunSamples != 0 || report.overload.samples != 0 ||
           !report.silent.empty();
}

void append(std::vector<TimelineSpan>& spans, const std::vector<TimelineSpan>& more) {
    SpanList<TimelineClock> list(mostSpansOfAStrip);
    for (const TimelineSpan span : spans)
        list.add(span);
    for (const TimelineSpan span : more)
        list.add(span);
    spans = list.spans();
}

void append(Overload& overload, const Overload& more) {
    if (overload.samples == 0)
        overload.firstAt = more.firstAt;
    overload.samples += more.samples;
    overload.peak = std::max(overload.peak, more.peak);
    append(overload.spans, more.spans);
}

} // namespace

template <class Clock>
void SpanList<Clock>::add(Span<Clock> span) {
    const bool atTheEnd = spans_.empty() || span.from >= spans_.back().from;
    if (!spans_.empty() && atTheEnd && span.from <= spans_.back().to + gap_) {
        spans_.back().to = std::max(spans_.back().to, span.to);
        return;
    }
    spans_.push_back(span);
    if (!atTheEnd)
        join();
    for (; spans_.size() > most_; join())
        gap_ = std::max<std::int64_t>(1, gap_ * 2);
}

template <class Clock>
void SpanList<Clock>::join() {
    std::ranges::sort(spans_, {}, &Span<Clock>::from);
    std::size_t last = 0;
    for (const Span<Clock> span : spans_)
        if (span.from <= spans_[last].to + gap_)
            spans_[last].to = std::max(spans_[last].to, span.to);
        else
            spans_[++last] = span;
    spans_.resize(last + 1);
}

template class SpanList<RangeClock>;
template class SpanList<TimelineClock>;

void OverloadMeter::measure(std::span<const float> samples, float gain, TimelineSample at) {
    const float peak = peakOf(samples) * gain;
    overload_.peak = std::max(overload_.peak, peak);
    if (!(peak > 1.0F))
        return;
    const CountAbove above = countAbove(samples, 1.0F / gain);
    if (overload_.samples == 0)
        overload_.firstAt = at + above.first;
    overload_.samples += above.samples;
    spans_.add({.from = at + above.first, .to = at + above.last + 1});
}

Overload OverloadMeter::overload() const {
    Overload overload = overload_;
    overload.spans = spans_.spans();
    return overload;
}

StripReport& StripReports::sumOf(const StripKey& key) {
    StripReport& sum = strips_[key];
    static_cast<StripKey&>(sum) = key;
    return sum;
}

void StripReports::add(const StripKey& key, const StripReport& report, double seconds) {
    if (seconds > slowest_.seconds)
        slowest_ = {key, seconds};
    if (!hasProblems(report))
        return;
    StripReport& sum = sumOf(key);
    if (sum.failure.empty())
        sum.failure = report.failure;
    sum.underrunSamples += report.underrunSamples;
    sum.underrunEpisodes += report.underrunEpisodes;
    append(sum.silent, report.silent);
    append(sum.overload, report.overload);
}

void StripReports::add(const MixReport& report) {
    for (const StripReport& strip : report.strips)
        add(strip, strip, 0.0);
    if (report.slowest.seconds > slowest_.seconds)
        slowest_ = report.slowest;
}

void StripReports::addSilence(const StripKey& key, TimelineSpan span, const std::string& failure) {
    StripReport& sum = sumOf(key);
    if (sum.failure.empty())
        sum.failure = failure;
    if (failure.empty()) {
        sum.underrunSamples += static_cast<std::uint64_t>(span.to - span.from);
        if (sum.silent.empty() || sum.silent.back().to != span.from)
            ++sum.underrunEpisodes;
    }
    append(sum.silent, {span});
}

std::vector<StripReport> StripReports::strips() const {
    std::vector<StripReport> strips;
    for (const auto& [key, report] : strips_)
        strips.push_back(report);
    return strips;
}

} // namespace audlmd
