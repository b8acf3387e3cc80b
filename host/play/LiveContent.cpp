#include "host/play/LiveContent.hpp"

#include "host/mix/ConvertedSources.hpp"
#include "host/services/Identities.hpp"
#include "host/signal/BestConverter.hpp"
#include "host/signal/BlockLoops.hpp"
#include "host/signal/Speed.hpp"
#include "host/signal/StripPlayer.hpp"
#include "host/signal/Unclipped.hpp"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace audlmd {
namespace {

constexpr std::size_t mostLateSpans = 256;
constexpr float headroomGain = 1 << headroomExponent;

void turnRound(StripSettings& settings) {
    settings.reverse = !settings.reverse;
    std::swap(settings.fade.fadeInSamples, settings.fade.fadeOutSamples);
    std::swap(settings.fade.fadeInCurve, settings.fade.fadeOutCurve);
    if (settings.automation)
        settings.automation->direction = settings.automation->direction == DynamicLevelDirection::forwards
                                             ? DynamicLevelDirection::reverse
                                             : DynamicLevelDirection::forwards;
}

} // namespace

StripSettings settingsAt(const StripSettings& strip, double speed) {
    StripSettings settings = strip;
    if (std::signbit(speed))
        turnRound(settings);
    const double factor = std::fabs(speed);
    if (factor == 1.0)
        return settings;
    settings.speed *= factor;
    if (!isSpeed(factor) || !isSpeed(settings.speed)) {
        std::ostringstream sentence;
        sentence << "a transport plays at " << slowestSpeed << " to " << fastestSpeed
                 << " times the speed, counted with the strip's own speed, and backwards with a minus sign, "
                    "not at "
                 << speed;
        throw std::invalid_argument(sentence.str());
    }
    if (settings.converter != Converter::linear)
        settings.converter = isFilteringSpeed(settings.speed) ? Converter::filtering : Converter::linear;
    return settings;
}

LiveContent::LiveContent(const std::vector<std::shared_ptr<SampleSource>>& channels, StripSettings strip,
                         const MaterialCacheOptions& cache, RenderFunctionLookUp<Unclipped> inlined)
    : strip_(std::move(strip)), segmentLength_(cache.segmentLength), inlined_(inlined), cache_(cache),
      late_(mostLateSpans) {
    if (channels.empty())
        throw std::invalid_argument("there is no channel to play");
    strip_.wait = false;
    const StripPlan checked(strip_);
    StripSettings plain = strip_;
    plain.converter = Converter::none;
    material_ = add(channels, plain);
    if (strip_.converter != Converter::best)
        return;
    forwards_ = add(channels, settingsAt(strip_, 1.0));
    backwards_ = add(channels, settingsAt(strip_, -1.0));
}

LiveContent::Cookies LiveContent::add(const std::vector<std::shared_ptr<SampleSource>>& channels,
                                      const StripSettings& strip) {
    Cookies cookies;
    Cookie cookie{makeUuid(), 0, 0};
    for (const std::shared_ptr<SampleSource>& channel : channels) {
        cookies.push_back(cookie);
        cache_.add(cookie,
                   std::make_shared<ScaledSource>(materialAtNormalSpeed(channel, strip), -headroomExponent));
        ++cookie.channel;
    }
    return cookies;
}

LiveContent::Played LiveContent::at(double speed) const {
    const StripSettings settings = settingsAt(strip_, speed);
    if (settings.converter != Converter::best)
        return {settings, material_, 1.0};
    return {atNormalSpeed(settings), speed < 0.0 ? backwards_ : forwards_, settings.speed};
}

/// A player for each channel, all at the same output sample.
class LiveContent::Voice final : public LiveVoice {
public:
    Voice(LiveContent& content, double position, double speed) : content_(content), speed_(speed) {
        Played played = content.at(speed);
        scale_ = played.scale;
        for (const Cookie& cookie : played.cookies) {
            played.settings.cookie = cookie;
            players_.push_back(
                std::make_unique<StripPlayer>(content.cache_, played.settings, content.inlined_));
        }
        const auto length = static_cast<double>(content.length());
        const double sample = std::clamp(speed < 0.0 ? length - position : position, 0.0, length);
        const OutputSample output = std::llround(sample / sourceStep());
        for (const std::unique_ptr<StripPlayer>& player : players_)
            player->seek(std::min<OutputSample>(output, endOf(*player)));
    }

    std::size_t render(std::span<const std::span<float>> channels) override {
        const double from = position();
        std::size_t rendered = 0;
        for (std::size_t channel = 0; channel < players_.size(); ++channel) {
            rendered = LiveContent::render(*players_[channel], channels[channel]);
            multiply(channels[channel].first(rendered), headroomGain);
        }
        content_.noteLate(from, position());
        return rendered;
    }

    bool isAtEnd() const override { return players_.front()->position() == endOf(*players_.front()); }
    double position() const override {
        const auto length = static_cast<double>(content_.length());
        const double played =
            std::min(static_cast<double>(players_.front()->position().number()) * sourceStep(), length);
        return speed_ < 0.0 ? length - played : played;
    }
    double step() const override { return speed_ < 0.0 ? -sourceStep() : sourceStep(); }

private:
    static OutputSample endOf(const StripPlayer& player) {
        return static_cast<std::int64_t>(player.outputLength());
    }
    double sourceStep() const { return players_.front()->speedInForce() * scale_; }

    LiveContent& content_;
    double speed_;
    double scale_ = 1.0;
    std::vector<std::unique_ptr<StripPlayer>> players_;
};

std::size_t LiveContent::render(StripPlayer& player, std::span<float> samples) {
    const auto rendered = static_cast<std::size_t>(player.renderFloats(samples));
    // What came through the tables is clipped already, and stays as it is.
    auto* clipped = reinterpret_cast<Aud::SampleF32*>(samples.data());
    convertBlock(samples.data(), rendered, clipped);
    return rendered;
}

std::unique_ptr<LiveVoice> LiveContent::start(double position, double speed) {
    return std::make_unique<Voice>(*this, position, speed);
}

void LiveContent::load(double position, double speed) {
    request(position, speed, 0);
}

bool LiveContent::awaitLoaded(double position, double speed, std::size_t frames,
                              const std::function<bool()>& isWanted) {
    constexpr std::uint32_t askEvery = 5; // milliseconds
    const std::vector<Aud::SampleCacheSegment> segments = request(position, speed, frames);
    return std::ranges::all_of(segments, [&](const Aud::SampleCacheSegment& segment) {
        while (segment.status() == Aud::eSegmentRequestOutstanding &&
               !segment.getRequestCompletedEvent()->wait(askEvery))
            if (!isWanted())
                return false;
        return true;
    });
}

std::vector<Aud::SampleCacheSegment> LiveContent::request(double position, double speed, std::size_t frames) {
    const Played strip = at(speed);
    const StripPlan plan(strip.settings);
    const auto whole = static_cast<double>(length());
    const double played = (speed < 0.0 ? whole - position : position) / strip.scale;
    const MaterialSample first = plan.inMaterial(std::llround(played));
    const double samples =
        std::min(static_cast<double>(frames) * plan.speedInForce, whole / strip.scale - played);
    // One more, because the first samples may lie near the end of their segment.
    const std::int64_t last = static_cast<std::int64_t>(samples / segmentLength_) + 1;
    std::vector<Aud::SampleCacheSegment> segments;
    for (std::int64_t segment = 0; segment <= last; ++segment) {
        const Distance<SourceRate> away = segment * segmentLength_;
        const MaterialSample sample = plan.settings.reverse ? first - away : first + away;
        for (const Cookie& cookie : strip.cookies)
            segments.push_back(cache_.request(cookie, sample.number(), plan.direction(), plan.gearing,
                                              strip_.forwardArgument));
    }
    return segments;
}

void LiveContent::noteLate(double from, double to) {
    const std::uint64_t before = std::exchange(lateSamples_, totals().lateSamples);
    if (lateSamples_ != before)
        late_.add({.from = static_cast<std::int64_t>(std::floor(std::min(from, to))),
                   .to = static_cast<std::int64_t>(std::ceil(std::max(from, to)))});
}

SoundReport LiveContent::totals() const {
    SoundReport report;
    for (const Cookies* cookies : {&material_, &forwards_, &backwards_})
        for (const Cookie& cookie : *cookies) {
            const MaterialStatistics statistics = cache_.statistics(cookie);
            report.lateSamples += statistics.underrunSamples;
            report.lateEpisodes += statistics.underrunEpisodes;
            if (report.failure.empty() && statistics.failedSegments != 0)
                report.failure = statistics.firstFailure.empty() ? "a read failed" : statistics.firstFailure;
        }
    return report;
}

SoundReport LiveContent::report() const {
    SoundReport report = totals();
    report.late = late_.spans();
    return report;
}

} // namespace audlmd
