#include "standalone/play/LivePlayer.hpp"

#include "standalone/play/LiveOutput.hpp"
#include "standalone/play/LiveRenderer.hpp"
#include "standalone/play/MixedTimeline.hpp"
#include "standalone/signal/GainLaws.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <pthread.h>
#include <stdexcept>
#include <thread>
#include <utility>

namespace audlmd {
namespace {

constexpr double shortestLoop = 0.05;

StripSettings rangeOf(const Media& media, StripSettings settings) {
    if (media.channels.empty())
        throw std::invalid_argument("there is no channel to play");
    if (settings.from == settings.to) {
        settings.from = 0;
        settings.to = media.channels.front()->length();
    }
    settings.sampleRate = media.sampleRate;
    return settings;
}

StripSettings wholeOf(const Timeline& timeline) {
    StripSettings settings;
    settings.to = timeline.length;
    settings.sampleRate = timeline.sampleRate;
    return settings;
}

} // namespace

/// Orders go from the program to the render thread under a mutex. The callback learns of them by the
/// generation alone.
// In the order in which the members are made. NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct LivePlayer::Impl {
    using Lock = std::unique_lock<std::mutex>;

    Impl(const std::vector<std::shared_ptr<SampleSource>>& channels, StripSettings strip, int rate,
         std::shared_ptr<MixedTimeline> mixed, std::unique_ptr<LiveMix> live, const LiveOptions& options)
        : settings(std::move(strip)), sampleRate(rate), timeline(std::move(mixed)), mix(std::move(live)),
          sizes(LiveRenderer::sizesFor(options, rate)),
          content(channels, settings, options.cache, timeline != nullptr ? MixedTimeline::headroom : 0,
                  options.inlined),
          ring(2 * sizes.blocksAhead + 2, sizes.blockFrames * content.channels()),
          output(ring, content.channels(), sizes.fadeFrames), renderer(content, mix.get(), ring, sizes),
          thread([this](const std::stop_token& stop) {
              // For debuggers and system monitors; at most 15 characters.
              pthread_setname_np(pthread_self(), "audlmd-live");
              serve(stop);
          }) {}

    std::int64_t limited(std::int64_t position) const {
        return std::clamp<std::int64_t>(position, 0, content.length());
    }
    std::int64_t position() const { return limited(std::llround(output.position())); }
    bool isHeard(const Lock&) const { return order.plays && !output.hasEnded(order.generation); }
    bool playsOn(const Lock& lock) const { return isHeard(lock) && !order.stopAt; }
    /// Hands over the order as a new generation.
    void change(const Lock&);

    void serve(const std::stop_token& stop);
    bool follow(const LiveOrder& next);

    const StripSettings settings;
    const int sampleRate;
    /// Both null where a material is played.
    const std::shared_ptr<MixedTimeline> timeline;
    const std::unique_ptr<LiveMix> mix;
    const LiveRenderer::Sizes sizes;
    LiveContent content;
    BlockRing ring;
    LiveOutput output;
    std::atomic<std::uint64_t> lateSamples{0};
    std::atomic<std::uint64_t> lateEpisodes{0};

    mutable std::mutex mutex;
    std::condition_variable_any changed;
    /// Both guarded by `mutex`. The transport's speed; a jog has one of its own in the order.
    double speed = 1.0;
    LiveOrder order;

    mutable std::mutex rendering;
    /// Guarded by `rendering`, as the content is.
    LiveRenderer renderer;
    std::string failure;
    /// Declared last: the thread ends before anything that it uses.
    std::jthread thread;
};

void LivePlayer::Impl::change(const Lock&) {
    ++order.generation;
    output.turnTo(order.generation);
    changed.notify_one();
}

/// The callback must not wake anybody, so a full ring is looked at again after a part of its length.
void LivePlayer::Impl::serve(const std::stop_token& stop) {
    const std::chrono::duration<double> pause(static_cast<double>(sizes.blockFrames) / sampleRate);
    bool isIdle = true;
    bool hasRoom = false;
    while (!stop.stop_requested()) {
        Lock lock(mutex);
        const auto isNew = [&] { return order.generation != renderer.generation(); };
        if (isIdle)
            changed.wait(lock, stop, isNew);
        else if (!hasRoom)
            changed.wait_for(lock, stop, pause, isNew);
        const LiveOrder next = order;
        lock.unlock();
        const std::lock_guard busy(rendering);
        hasRoom = follow(next);
        isIdle = renderer.isIdle();
    }
}

bool LivePlayer::Impl::follow(const LiveOrder& next) {
    bool hasRoom = false;
    try {
        hasRoom = renderer.follow(next, static_cast<double>(position()));
    } catch (const std::exception& error) {
        failure = error.what();
        renderer.giveUp();
    }
    const StripReport late = content.totals();
    lateSamples.store(late.underrunSamples + (mix ? mix->lateSamples() : 0), std::memory_order_relaxed);
    lateEpisodes.store(late.underrunEpisodes + (mix ? mix->lateEpisodes() : 0), std::memory_order_relaxed);
    return hasRoom;
}

LivePlayer::LivePlayer(const Media& media, StripSettings settings, const LiveOptions& options)
    : impl_(std::make_unique<Impl>(media.channels, rangeOf(media, std::move(settings)), media.sampleRate,
                                   nullptr, nullptr, options)) {}

LivePlayer::LivePlayer(Timeline timeline, OpenMedia open, const LiveOptions& options) {
    const StripSettings whole = wholeOf(timeline);
    const int rate = timeline.sampleRate;
    MixerOptions mixing{.threads = options.mixThreads, .wait = false, .inlined = options.inlined};
    auto live = std::make_unique<LiveMix>(timeline, open, mixing);
    mixing.wait = true;
    auto mixed = std::make_shared<MixedTimeline>(std::move(timeline), std::move(open), mixing);
    impl_ =
        std::make_unique<Impl>(MixedTimeline::sources(mixed), whole, rate, mixed, std::move(live), options);
}

LivePlayer::~LivePlayer() = default;

std::size_t LivePlayer::channels() const {
    return impl_->content.channels();
}

int LivePlayer::sampleRate() const {
    return impl_->sampleRate;
}

std::int64_t LivePlayer::length() const {
    return impl_->content.length();
}

void LivePlayer::fill(std::span<float> interleaved) noexcept {
    impl_->output.fill(interleaved);
}

void LivePlayer::play() {
    const Impl::Lock lock(impl_->mutex);
    LiveOrder& order = impl_->order;
    if (impl_->playsOn(lock))
        return;
    const std::int64_t end = impl_->speed < 0.0 ? 0 : length();
    if (impl_->position() == end)
        impl_->output.startAt(length() - end);
    order.plays = true;
    order.speed = impl_->speed;
    order.stopAt.reset();
    impl_->change(lock);
}

void LivePlayer::stop() {
    const Impl::Lock lock(impl_->mutex);
    impl_->order.plays = false;
    impl_->order.stopAt.reset();
    impl_->change(lock);
}

void LivePlayer::setSpeed(double speed) {
    settingsAt(impl_->settings, speed); // Throws for a speed that cannot be played.
    const Impl::Lock lock(impl_->mutex);
    LiveOrder& order = impl_->order;
    if (std::exchange(impl_->speed, speed) == speed || !order.plays || order.stopAt)
        return;
    order.speed = speed;
    impl_->change(lock);
}

void LivePlayer::seek(std::int64_t position) {
    const Impl::Lock lock(impl_->mutex);
    impl_->order.plays = impl_->playsOn(lock);
    impl_->order.stopAt.reset();
    impl_->output.startAt(impl_->limited(position));
    impl_->change(lock);
}

void LivePlayer::jog(std::int64_t samples) {
    // No jog is longer than the sound, and so none overflows.
    samples = std::clamp(samples, -length(), length());
    const Impl::Lock lock(impl_->mutex);
    LiveOrder& order = impl_->order;
    if (impl_->playsOn(lock)) {
        impl_->output.startAt(impl_->limited(impl_->position() + samples));
    } else {
        // A jog that is still heard is cut off: the next one starts where it would have ended.
        const std::int64_t from = impl_->isHeard(lock) ? *order.stopAt : impl_->position();
        impl_->output.startAt(from);
        order.plays = true;
        order.speed = samples < 0 ? -1.0 : 1.0;
        order.stopAt = impl_->limited(from + samples);
    }
    impl_->change(lock);
}

void LivePlayer::setLoop(std::optional<LoopRange> range) {
    const auto shortest = std::llround(shortestLoop * sampleRate());
    // The first two conditions keep the difference from overflowing.
    if (range && (range->from < 0 || range->to < range->from || range->to > length() ||
                  range->to - range->from < shortest))
        throw std::invalid_argument("a loop lies inside the sound and lasts at least 0.05 seconds");
    const Impl::Lock lock(impl_->mutex);
    impl_->order.loop = range;
}

void LivePlayer::setLevel(float uValue) {
    impl_->output.setGain(static_cast<float>(mixerStyleGain(static_cast<double>(uValue))));
}

std::int64_t LivePlayer::position() const {
    return impl_->position();
}

double LivePlayer::speed() const {
    const Impl::Lock lock(impl_->mutex);
    return impl_->speed;
}

bool LivePlayer::isPlaying() const {
    const Impl::Lock lock(impl_->mutex);
    return impl_->playsOn(lock);
}

std::optional<LoopRange> LivePlayer::loop() const {
    const Impl::Lock lock(impl_->mutex);
    return impl_->order.loop;
}

float LivePlayer::takePeak(std::size_t channel) {
    return impl_->output.takePeak(channel);
}

std::uint64_t LivePlayer::lateSamples() const {
    return impl_->lateSamples.load(std::memory_order_relaxed);
}

std::uint64_t LivePlayer::lateEpisodes() const {
    return impl_->lateEpisodes.load(std::memory_order_relaxed);
}

std::uint64_t LivePlayer::starvedFrames() const {
    return impl_->output.starvedFrames();
}

std::uint64_t LivePlayer::starvedEpisodes() const {
    return impl_->output.starvedEpisodes();
}

LiveReport LivePlayer::report() const {
    LiveReport report;
    // The mixer behind the cache waits for its files, so its strips are never late. It knows what failed.
    if (impl_->timeline != nullptr)
        report.strips = impl_->timeline->report().strips;
    const std::lock_guard busy(impl_->rendering);
    report.late = impl_->content.report();
    if (!impl_->failure.empty())
        report.late.failure = impl_->failure;
    if (impl_->mix != nullptr)
        for (StripReport& strip : impl_->mix->report())
            report.strips.push_back(std::move(strip));
    return report;
}

} // namespace audlmd
