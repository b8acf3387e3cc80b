#include "host/mix/TrackSums.hpp"

#include "host/signal/BlockLoops.hpp"

#include <algorithm>
#include <utility>

namespace audlmd {
namespace {

constexpr std::size_t mostSpansOfTheOutput = 1024;

std::span<float> partOf(std::span<float> bus, TimelineSample start, TimelineSpan span) {
    return bus.subspan(static_cast<std::size_t>(span.from - start), static_cast<std::size_t>(span.length()));
}

std::span<const float> samplesIn(const BusTerm& term, TimelineSpan span) {
    return term.samples.subspan(static_cast<std::size_t>(span.from - term.span.from),
                                static_cast<std::size_t>(span.length()));
}

/// The part of a term in `span`, if there is one.
void add(const BusTerm& term, TimelineSpan span, TimelineSample start, std::span<float> bus) {
    if (span.from < span.to)
        addTo(partOf(bus, start, span), samplesIn(term, span), term.gain);
}

/// Neighbours that lie at the same place are added in one pass.
void add(const std::vector<BusTerm>& terms, TimelineSample start, std::span<float> bus,
         std::vector<BusInput>& inputs) {
    for (auto term = terms.begin(); term != terms.end();) {
        const TimelineSpan span = term->span;
        inputs.clear();
        for (; term != terms.end() && term->span == span; ++term)
            inputs.push_back({term->samples.data(), term->gain});
        addTo(partOf(bus, start, span), inputs);
    }
}

/// The first track that sounds, and tracks of one term. A bus that begins with +0.0 never holds -0.0, so that
/// adding to +0.0 first changes nothing.
bool needsNoBus(const std::vector<BusTerm>& terms, bool isFirst) {
    return isFirst || terms.size() < 2;
}

/// Two terms as one sum where both are, in one pass.
void addBoth(const BusTerm& a, const BusTerm& b, TimelineSample start, std::span<float> bus) {
    const TimelineSample from = std::max(a.span.from, b.span.from);
    const TimelineSpan both{.from = from, .to = std::max(from, std::min(a.span.to, b.span.to))};
    for (const BusTerm* term : {&a, &b}) {
        add(*term, {.from = term->span.from, .to = std::min(both.from, term->span.to)}, start, bus);
        add(*term, {.from = std::max(both.to, term->span.from), .to = term->span.to}, start, bus);
    }
    if (both.from < both.to)
        addTo(partOf(bus, start, both), samplesIn(a, both), a.gain, samplesIn(b, both), b.gain);
}

} // namespace

TrackSums::TrackSums(std::size_t channels, std::size_t stems, std::size_t block)
    : hasStems_(stems != 0), channels_(channels, Channel{.direct = {},
                                                         .terms = {},
                                                         .inputs = {},
                                                         .track = std::vector<float>(hasStems_ ? 0 : block)}),
      meters_(channels * (stems + 1), OverloadMeter(mostSpansOfTheOutput)) {}

void TrackSums::sum(std::size_t channel, TimelineSpan block, std::span<const SoundingStrip> strips,
                    std::span<const std::span<float>> buffers) {
    for (std::size_t buffer = channel; buffer < buffers.size(); buffer += channels_.size())
        std::ranges::fill(buffers[buffer], 0.0F);
    const std::span<float> output = buffers[channel];
    auto& [direct, terms, inputs, scratch] = channels_[channel];
    direct.clear();
    for (auto strip = strips.begin(); strip != strips.end();) {
        const std::size_t track = strip->track;
        const bool isFirst = strip == strips.begin();
        terms.clear();
        for (; strip != strips.end() && strip->track == track; ++strip)
            strip->strip->appendTerms(channel, strip->span, terms);
        if (!hasStems_ && needsNoBus(terms, isFirst)) {
            direct.insert(direct.end(), terms.begin(), terms.end());
            continue;
        }
        add(direct, block.from, output, inputs);
        direct.clear();
        if (!hasStems_ && terms.size() == 2) {
            addBoth(terms[0], terms[1], block.from, output);
            continue;
        }
        const std::size_t stem = (track + 1) * channels_.size() + channel;
        const std::span<float> sum = hasStems_ ? buffers[stem] : std::span(scratch).first(output.size());
        if (!hasStems_)
            std::ranges::fill(sum, 0.0F);
        add(terms, block.from, sum, inputs);
        addTo(output, sum, 1.0F);
        if (hasStems_)
            meters_[stem].measure(sum, 1.0F, block.from);
    }
    add(direct, block.from, output, inputs);
    meters_[channel].measure(output, 1.0F, block.from);
}

void TrackSums::tell(MixReport& report) const {
    for (std::size_t buffer = 0; buffer < meters_.size(); ++buffer) {
        if (buffer >= channels_.size() && buffer % channels_.size() == 0)
            report.stems.emplace_back();
        (buffer < channels_.size() ? report.channels : report.stems.back())
            .push_back(meters_[buffer].overload());
    }
}

} // namespace audlmd
