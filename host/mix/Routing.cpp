#include "host/mix/Routing.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <stdexcept>

namespace audlmd {
namespace {

using enum Speaker;

constexpr double minus3dB = std::numbers::sqrt2 / 2.0;

/// Where a channel goes, at -3 dB, for which the target has no speaker. Surrounds go to the other surrounds
/// first, where there are some.
struct Detour {
    Speaker speaker;
    std::array<Speaker, 2> to;
};

/// `unknown` stands for nothing.
constexpr Detour detours[] = {{centre, {left, right}},
                              {leftOfCentre, {left, unknown}},
                              {rightOfCentre, {right, unknown}},
                              {sideLeft, {left, unknown}},
                              {sideRight, {right, unknown}},
                              {rearLeft, {left, unknown}},
                              {rearRight, {right, unknown}},
                              {rearCentre, {rearLeft, rearRight}},
                              {topCentre, {centre, unknown}},
                              {topFrontLeft, {left, unknown}},
                              {topFrontCentre, {centre, unknown}},
                              {topFrontRight, {right, unknown}},
                              {topRearLeft, {rearLeft, unknown}},
                              {topRearCentre, {rearCentre, unknown}},
                              {topRearRight, {rearRight, unknown}}};

bool has(const ChannelLayout& layout, Speaker speaker) {
    return std::ranges::find(layout, speaker) != layout.end();
}

/// Of a speaker that the layout has.
std::size_t indexOf(const ChannelLayout& layout, Speaker speaker) {
    return static_cast<std::size_t>(std::ranges::find(layout, speaker) - layout.begin());
}

/// The surround beside this one on the same side; `unknown` for other speakers.
Speaker otherSurround(Speaker speaker) {
    switch (speaker) {
    case sideLeft:
        return rearLeft;
    case sideRight:
        return rearRight;
    case rearLeft:
        return sideLeft;
    case rearRight:
        return sideRight;
    default:
        return unknown;
    }
}

/// The gains of one channel in all channels of a layout with left and right.
class Column {
public:
    explicit Column(const ChannelLayout& to) : to_(to), gains_(to.size()) {}

    void add(Speaker speaker, double gain) {
        if (has(to_, speaker)) {
            gains_[indexOf(to_, speaker)] += gain;
            return;
        }
        if (const Speaker other = otherSurround(speaker); other != unknown && has(to_, other))
            return add(other, gain);
        for (const Detour& detour : detours)
            if (detour.speaker == speaker)
                for (const Speaker next : detour.to)
                    if (next != unknown)
                        add(next, gain * minus3dB);
    }

    const std::vector<double>& gains() const { return gains_; }

private:
    const ChannelLayout& to_;
    std::vector<double> gains_;
};

/// In a target with one pair of surrounds, or none, two pairs share what there is.
double shareOf(Speaker speaker, const ChannelLayout& from, const ChannelLayout& to) {
    const Speaker other = otherSurround(speaker);
    const bool shares = other != unknown && has(from, other) && !(has(to, speaker) && has(to, other));
    return shares ? minus3dB : 1.0;
}

Routing routingBySpeakers(const ChannelLayout& from, const ChannelLayout& to) {
    const bool isMono = to.size() == 1;
    const ChannelLayout& target = isMono ? usualLayout(2) : to;
    Routing routing{std::vector(to.size(), std::vector<float>(from.size()))};
    for (std::size_t channel = 0; channel < from.size(); ++channel) {
        Column column(target);
        if (from.size() == 1) {
            column.add(left, 1.0);
            column.add(right, 1.0);
        } else {
            column.add(from[channel], shareOf(from[channel], from, to));
        }
        const std::vector<double>& gains = column.gains();
        for (std::size_t output = 0; output < to.size(); ++output)
            routing.rows[output][channel] =
                static_cast<float>(isMono ? (gains[0] + gains[1]) / 2.0 : gains[output]);
    }
    return routing;
}

Routing routingByNumber(std::size_t from, std::size_t to) {
    Routing routing{std::vector(to, std::vector<float>(from))};
    for (std::size_t channel = 0; channel < from; ++channel)
        routing.rows[channel][channel] = 1.0F;
    if (from == 1 && to > 1)
        routing.rows[1][0] = 1.0F;
    return routing;
}

ChannelLayout knownOrUsual(const ChannelLayout& layout) {
    return isKnown(layout) ? layout : usualLayout(layout.size());
}

} // namespace

Routing defaultRouting(const ChannelLayout& from, const ChannelLayout& to) {
    const bool fits = from.size() <= to.size();
    if (fits && !isKnown(from) && !isKnown(to))
        return routingByNumber(from.size(), to.size());
    const ChannelLayout source = knownOrUsual(from);
    const ChannelLayout target = knownOrUsual(to);
    if (isKnown(source) && isKnown(target))
        return routingBySpeakers(source, target);
    if (fits)
        return routingByNumber(from.size(), to.size());
    throw std::invalid_argument("the material has " + std::to_string(from.size()) +
                                " channels, more than the output's " + std::to_string(to.size()) +
                                ", and nobody knows their speakers: it needs a routing of its own");
}

Routing pickedChannels(const std::vector<std::size_t>& numbers, std::size_t channels) {
    Routing routing{std::vector(numbers.size(), std::vector<float>(channels))};
    for (std::size_t sum = 0; sum < numbers.size(); ++sum)
        routing.rows[sum][numbers[sum]] = 1.0F;
    return routing;
}

Routing panned(Routing routing, double pan, const ChannelLayout& to) {
    if (!(std::abs(pan) <= 100.0))
        throw std::invalid_argument("the pan is not a number from -100 to 100");
    const ChannelLayout speakers = knownOrUsual(to);
    if (has(speakers, left) && has(speakers, right))
        for (float& gain : routing.rows[indexOf(speakers, pan < 0.0 ? right : left)])
            gain *= static_cast<float>((100.0 - std::abs(pan)) / (100.0 + std::abs(pan)));
    return routing;
}

Routing combined(const Routing& first, const Routing& second) {
    Routing both;
    for (const std::vector<float>& gains : second.rows) {
        std::vector<double> sum(first.rows.front().size());
        for (std::size_t middle = 0; middle < gains.size(); ++middle)
            for (std::size_t channel = 0; channel < sum.size(); ++channel)
                sum[channel] += double{gains[middle]} * double{first.rows[middle][channel]};
        both.rows.emplace_back(sum.begin(), sum.end());
    }
    return both;
}

std::string foldDownText(const ChannelLayout& from, const ChannelLayout& to) {
    const ChannelLayout source = knownOrUsual(from);
    std::string text = nameOf(source) + " is folded down to " + nameOf(knownOrUsual(to));
    const Routing routing = defaultRouting(from, to);
    const std::vector<std::string> names = channelNames(source);
    std::string lost;
    for (std::size_t channel = 0; channel < names.size(); ++channel)
        if (std::ranges::all_of(routing.rows, [&](const auto& row) { return row[channel] == 0.0F; }))
            lost += (lost.empty() ? ", without " : " and ") + names[channel];
    return text + lost;
}

} // namespace audlmd
