#include "host/play/LivePlayer.hpp"

#include "host/play/LiveOutput.hpp"
#include "host/play/LiveRenderer.hpp"
#include "host/play/MixedTimeline.hpp"
#include "host/play/Transport.hpp"
#include "host/services/Threads.hpp"
#include "host/signal/GainLaws.hpp"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
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
    // The mix of the timeline is the material.
    settings.to = std::int64_t{timeline.length};
    settings.sampleRate = timeline.sampleRate;
    return settings;
}

} // namespace

/// Orders go from the program to the render thread under a mutex. The callback learns of them by the
/// generation alone.
// In the order in which the members are made. NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding)
struct LivePlayer::Impl {
    Impl(const std::vector<std::shared_ptr<SampleSource>>& sources, StripSettings strip, int rate,
         std::shared_ptr<MixedTimeline> mixed, std::unique_ptr<LiveMix> live, const LiveOptions& options)
        : settings(std::move(strip)), sampleRate(rate), timeline(std::move(mixed)), mix(std::move(live)),
          sizes(LiveRenderer::sizesFor(options, rate)),
          content(sources, settings, options.cache, options.inlined),
          ring(2 * sizes.blocksAhead + 2, sizes.blockFrames * content.channels()),
          output(ring, content.channels(), sizes.fadeFrames), channels(content.channels()),
          length(content.length()), transport(length, std::llround(shortestLoop * rate)),
          renderer(content, mix.get(), ring, sizes),
          thread(namedThread("audlmd-live", [this](const std::stop_token& stop) { serve(stop); })) {}
    ~Impl() {
        // A loader may be mixing a segment, and waits for the strips' files.
        if (timeline != nullptr)
            timeline->callOff();
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    RangeSample position() const {
        return std::clamp<std::int64_t>(std::llround(output.position()), 0, length);
    }
    /// Of the order in force.
    Transport::Heard heard() const AUDLMD_REQUIRES(mutex) {
        return {.position = position(), .hasEnded = output.hasEnded(transport.order().generation)};
    }
    /// Gives the transport an order, and hands a new generation over.
    template <class Order>
    void give(Order order);

    void serve(const std::stop_token& stop);
    /// Lets the renderer go on with an order. Waits first where the order starts, until the first samples are
    /// loaded, or until another order or the end of the player calls that off. Returns whether the ring had
    /// room.
    bool follow(const LiveOrder& next, const std::stop_token& stop);
    /// For the thread, which asks whether it has something to do, and loads, without holding anything.
    const LiveRenderer& ownRenderer() const AUDLMD_UNCHECKED("only the thread changes the renderer") {
        return renderer;
    }
    void giveUp(const LiveOrder& order, const char* reason) AUDLMD_EXCLUDES(rendering);
    void countLate() AUDLMD_REQUIRES(rendering);
    bool isStill(std::uint64_t generation) const {
        const Lock lock(mutex);
        return transport.order().generation == generation;
    }

    const StripSettings settings;
    const int sampleRate;
    /// Both null where a material is played.
    const std::shared_ptr<MixedTimeline> timeline;
    const std::unique_ptr<LiveMix> mix AUDLMD_PT_GUARDED_BY(rendering);
    const LiveRenderer::Sizes sizes;
    LiveContent content AUDLMD_GUARDED_BY(rendering);
    BlockRing ring;
    LiveOutput output;
    const std::size_t channels;
    const Distance<SourceRate> length;
    std::atomic<std::uint64_t> lateSamples{0};
    std::atomic<std::uint64_t> lateEpisodes{0};

    mutable Mutex mutex;
    std::condition_variable_any changed;
    Transport transport AUDLMD_GUARDED_BY(mutex);

    /// Held while a block is rendered, and never while the first samples of an order load.
    mutable Mutex rendering;
    LiveRenderer renderer AUDLMD_GUARDED_BY(rendering);
    std::string failure AUDLMD_GUARDED_BY(rendering);
    /// Declared last: the thread ends before anything that it uses.
    std::jthread thread;
};

template <class Order>
void LivePlayer::Impl::give(Order order) {
    const Lock lock(mutex);
    const std::uint64_t before = transport.order().generation;
    order(transport, heard());
    const LiveOrder& next = transport.order();
    if (next.generation == before)
        return;
    if (next.startAt)
        output.startAt(*next.startAt, next.generation);
    output.turnTo(next.generation);
    changed.notify_one();
}

/// The callback must not wake anybody, so a full ring is looked at again after a part of its length.
void LivePlayer::Impl::serve(const std::stop_token& stop) {
    const std::chrono::duration<double> pause(static_cast<double>(sizes.blockFrames) / sampleRate);
    bool hasRoom = false;
    while (!stop.stop_requested()) {
        Lock lock(mutex);
        const auto isNew = [&]() AUDLMD_REQUIRES(mutex) {
            return transport.order().generation != ownRenderer().generation();
        };
        if (ownRenderer().isIdle())
            changed.wait(lock, stop, isNew);
        else if (!hasRoom)
            changed.wait_for(lock, stop, pause, isNew);
        const LiveOrder next = transport.order();
        lock.unlock();
        hasRoom = follow(next, stop);
    }
}

void LivePlayer::Impl::countLate() {
    const SoundReport sound = content.totals();
    lateSamples.store(sound.lateSamples + (mix ? mix->lateSamples() : 0), std::memory_order_relaxed);
    lateEpisodes.store(sound.lateEpisodes + (mix ? mix->lateEpisodes() : 0), std::memory_order_relaxed);
}

bool LivePlayer::Impl::follow(const LiveOrder& next, const std::stop_token& stop) {
    try {
        const auto from = static_cast<double>(position().number());
        const auto isWanted = [&] { return !stop.stop_requested() && isStill(next.generation); };
        if (next.plays && next.generation != ownRenderer().generation() &&
            !ownRenderer().awaitStart(next, from, isWanted))
            return true;
        const Lock busy(rendering);
        const bool hasRoom = renderer.follow(next, from);
        countLate();
        return hasRoom;
    } catch (const std::exception& error) {
        giveUp(next, error.what());
        return false;
    }
}

void LivePlayer::Impl::giveUp(const LiveOrder& order, const char* reason) {
    const Lock busy(rendering);
    failure = reason;
    renderer.giveUp(order);
    countLate();
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
    return impl_->channels;
}

int LivePlayer::sampleRate() const {
    return impl_->sampleRate;
}

std::int64_t LivePlayer::length() const {
    return impl_->length;
}

void LivePlayer::fill(std::span<float> interleaved) noexcept {
    impl_->output.fill(interleaved);
}

void LivePlayer::play() {
    impl_->give([](Transport& transport, const Transport::Heard& heard) { transport.play(heard); });
}

void LivePlayer::stop() {
    impl_->give([](Transport& transport, const Transport::Heard&) { transport.stop(); });
}

void LivePlayer::setSpeed(double speed) {
    settingsAt(impl_->settings, speed); // Throws for a speed that cannot be played.
    impl_->give([speed](Transport& transport, const Transport::Heard&) { transport.setSpeed(speed); });
}

void LivePlayer::seek(RangeSample position) {
    impl_->give(
        [position](Transport& transport, const Transport::Heard& heard) { transport.seek(position, heard); });
}

void LivePlayer::jog(Distance<SourceRate> samples) {
    impl_->give(
        [samples](Transport& transport, const Transport::Heard& heard) { transport.jog(samples, heard); });
}

void LivePlayer::setLoop(std::optional<RangeSpan> range) {
    impl_->give([range](Transport& transport, const Transport::Heard&) { transport.setLoop(range); });
}

void LivePlayer::setLevel(float uValue) {
    impl_->output.setGain(static_cast<float>(mixerStyleGain(static_cast<double>(uValue))));
}

RangeSample LivePlayer::position() const {
    return impl_->position();
}

double LivePlayer::speed() const {
    const Lock lock(impl_->mutex);
    return impl_->transport.speed();
}

bool LivePlayer::isPlaying() const {
    const Lock lock(impl_->mutex);
    return impl_->transport.isPlaying(impl_->heard());
}

std::optional<RangeSpan> LivePlayer::loop() const {
    const Lock lock(impl_->mutex);
    return impl_->transport.order().loop;
}

float LivePlayer::takePeak(std::size_t channel) {
    return impl_->output.takePeak(channel);
}

LiveUnderruns LivePlayer::underruns() const {
    return {.lateSamples = impl_->lateSamples.load(std::memory_order_relaxed),
            .lateEpisodes = impl_->lateEpisodes.load(std::memory_order_relaxed),
            .starvedFrames = impl_->output.starvedFrames(),
            .starvedEpisodes = impl_->output.starvedEpisodes()};
}

LiveReport LivePlayer::report() const {
    LiveReport report;
    // The mixer behind the cache waits for its files, so its strips are never late. It knows what failed.
    if (impl_->timeline != nullptr)
        report.strips = impl_->timeline->report().strips;
    const Lock busy(impl_->rendering);
    report.sound = impl_->content.report();
    if (!impl_->failure.empty())
        report.sound.failure = impl_->failure;
    if (impl_->mix != nullptr)
        for (StripReport& strip : impl_->mix->report())
            report.strips.push_back(std::move(strip));
    return report;
}

} // namespace audlmd
