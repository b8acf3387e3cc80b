#include "tools/audlmd/plot/GainTrace.hpp"

#include "host/signal/GainLaws.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

namespace audlmd::command {

using namespace plot;

namespace {

/// The material's sample for 1.0, so that gains up to 60 dB do not clip. A power of two changes no digit.
constexpr float unit = 0x1p-10F;

/// Ones, then zeros.
class StepSource final : public SampleSource {
public:
    StepSource(std::int64_t length, std::int64_t ones) : length_(length), ones_(ones) {}

    std::int64_t length() const override { return length_; }
    void read(std::int64_t position, std::span<float> samples) override {
        const std::int64_t size = std::ssize(samples);
        const std::int64_t ones = std::clamp<std::int64_t>(ones_ - position, 0, size);
        std::fill_n(samples.begin(), ones, unit);
        std::fill(samples.begin() + ones, samples.end(), 0.0F);
    }

private:
    std::int64_t length_;
    std::int64_t ones_;
};

/// The lowest and the highest point of a part of the time.
struct Extremes {
    Point lowest;
    Point highest;

    void add(Point point) {
        lowest = point.y < lowest.y ? point : lowest;
        highest = point.y > highest.y ? point : highest;
    }

    /// In the order of time.
    void appendTo(std::vector<Point>& points) const {
        const bool rising = lowest.x <= highest.x;
        points.push_back(rising ? lowest : highest);
        if (lowest.x != highest.x)
            points.push_back(rising ? highest : lowest);
    }
};

} // namespace

GainTrace::GainTrace(StripSettings settings, std::int64_t length, std::int64_t ones) : block_(65536) {
    settings.cookie = Cookie{};
    settings.from = 0;
    settings.to = length;
    cache_.add(settings.cookie, std::make_shared<StepSource>(length, ones));
    player_.emplace(cache_, std::move(settings));
}

std::span<const float> GainTrace::next() {
    const std::span<float> rendered(block_.data(), player_->render(block_));
    for (float& sample : rendered)
        sample /= unit;
    return rendered;
}

std::vector<Point> gainOverTime(const StripSettings& settings, std::int64_t length, int sampleRate,
                                const Watcher& watcher) {
    constexpr std::int64_t parts = 1500;
    GainTrace trace(settings, length, length);
    const std::int64_t partLength = std::max<std::int64_t>(1, trace.length() / parts);
    std::vector<Point> points;
    Extremes extremes{};
    std::int64_t position = 0;
    for (auto samples = trace.next(); !samples.empty(); samples = trace.next()) {
        watcher(position, trace.length(), sampleRate);
        for (const float sample : samples) {
            const Point point{static_cast<double>(position) / sampleRate, static_cast<double>(sample)};
            if (position % partLength == 0)
                extremes = {point, point};
            extremes.add(point);
            ++position;
            if (position % partLength == 0 || position == trace.length())
                extremes.appendTo(points);
        }
    }
    return points;
}

std::vector<Point> inDecibels(std::vector<Point> gains) {
    for (Point& point : gains)
        point.y = decibelsOfGain(point.y);
    return gains;
}

Axis decibelAxis(const std::vector<Series>& series, double lowest) {
    constexpr double step = 6.0;
    double from = 0.0;
    double to = 0.0;
    for (const Series& line : series)
        for (const Point& point : line.points) {
            from = std::min(from, point.y);
            to = std::max(to, point.y);
        }
    // A quarter of a step more than needed, so that a line at the highest level is not drawn on the frame.
    return {"Gain (dB)", std::max(lowest, step * std::floor(from / step - 0.25)),
            step * std::ceil(to / step + 0.25), Scale::decibels};
}

} // namespace audlmd::command
