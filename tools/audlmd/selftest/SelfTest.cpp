#include "tools/audlmd/selftest/SelfTest.hpp"

#include "host/cache/MaterialCache.hpp"
#include "host/deliver/Loudness.hpp"
#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "host/mix/Mixer.hpp"
#include "host/signal/StripPlayer.hpp"
#include "host/words/StripWords.hpp"
#include "tools/audlmd/files/OutputFormat.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"

#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

namespace audlmd::command {
namespace {

/// What the release has made, on processors with AVX2 and without.
const std::map<std::string_view, std::uint64_t> released{
    {"192 chains, converter none", 0x180AC28B44B7B8D3},
    {"192 chains, converter linear", 0xACF433C93CEC3BF5},
    {"192 chains, converter filtering", 0x6A4304EBF25A83B0},
    {"chains through the tables, f32", 0xE77066D65B227EDC},
    {"chains through the tables, s16", 0x0DD0BE075D5A4F12},
    {"chains through the tables, s24", 0x4197A979C357F121},
    {"chains through the tables, s8", 0x5F96C594A7CCBFAD},
    {"chains through the tables, u8", 0xA948DC50867F1127},
    {"chains through the tables, s24in32", 0xD114166752BD982A},
    {"chains through the tables, s32", 0x7231366C5F415F88},
    {"rate 44100 to 48000", 0x1F9626EA675972E6},
    {"rate 48000 to 44100", 0x62011C5A5B38A122},
    {"rate 96000 to 48000", 0x88ED529AE46DBA36},
    {"delivery, nearest", 0x2976E92E4FF8E601},
    {"delivery, dithered", 0x2852F4A12DB3B227},
    {"delivery, truncated", 0xA3189B16C0A57E53},
    {"mix of two tracks", 0x05A0B6D2D687DD44},
    {"loudness of the mix", 0xD1C43D2FDF99CF1D},
};

class Fingerprint {
public:
    template <class Sample>
    void add(std::span<const Sample> samples) {
        for (const std::byte byte : std::as_bytes(samples))
            value_ = (value_ ^ std::to_integer<std::uint64_t>(byte)) * 0x100000001B3U;
    }
    std::uint64_t value() const { return value_; }

private:
    std::uint64_t value_ = 0xCBF29CE484222325U;
};

/// 16-bit noise 12 dB below full scale: the same numbers with every library.
std::vector<float> wholeNoise(std::size_t length, std::uint32_t seed = 1) {
    std::vector<float> samples(length);
    for (float& sample : samples) {
        seed = seed * 1664525U + 1013904223U;
        sample = std::ldexp(static_cast<float>(static_cast<std::int16_t>(seed >> 16U)), -17);
    }
    return samples;
}

constexpr std::array converters{Converter::none, Converter::linear, Converter::filtering};
constexpr int combinations = 2 * 6 * 4 * 2 * 2;

/// One of the combinations of stages, each of which is a chain of its own. The numbers are arbitrary.
StripSettings settingsOf(int combination, Converter converter, std::int64_t length) {
    StripSettings settings;
    // Silence on either side of the material.
    settings.from = -50;
    settings.to = length + 50;
    settings.converter = converter;
    constexpr std::array testSpeeds{0.375, 1.1, 2.0, 0.77, 3.3};
    if (converter != Converter::none)
        settings.speed = testSpeeds[static_cast<std::size_t>(combination) % testSpeeds.size()];
    settings.reverse = combination % 2 != 0;
    const auto whole = static_cast<std::uint64_t>(settings.to - settings.from);
    constexpr std::array<std::array<unsigned int, 2>, 6> twelfths{
        {{0, 0}, {4, 0}, {0, 3}, {4, 3}, {12, 0}, {0, 12}}};
    const auto [in, out] = twelfths[static_cast<std::size_t>(combination) / 2 % twelfths.size()];
    const auto curve = static_cast<FadeCurve>(1 + combination % 3);
    settings.fade = {.fadeInSamples = whole * in / 12,
                     .fadeOutSamples = whole * out / 12,
                     .fadeInCurve = curve,
                     .fadeOutCurve = curve};
    const int level = combination / 12 % 4;
    if (level == 1)
        settings.outerLevel = 0.8F;
    else if (level >= 2)
        settings.automation = {
            Automation({{0, 0.9F}, {length / 4, 1.1F}, {length / 4, 0.4F}, {length, 1.0F}}),
            level == 2 ? DynamicLevelDirection::forwards : DynamicLevelDirection::reverse};
    if (combination / 48 % 2 != 0)
        settings.middleLevel = 0.7F;
    if (combination / 96 != 0)
        settings.equaliser = {{BandKind::lowShelf, 200.0, -3.0},
                              {BandKind::peak, 3000.0, 6.0, 2.0},
                              {BandKind::highShelf, 9000.0, 2.5},
                              {BandKind::highPass, 60.0},
                              {BandKind::lowPass, 15000.0}};
    return settings;
}

/// Calls `use` with a player for each combination, or every so many.
template <class Use>
void forEachCombination(Converter converter, std::size_t length, RenderFunctionLookUp<Unclipped> inlined,
                        int step, Use use) {
    MaterialCache cache({.segmentLength = 509});
    cache.add(Cookie(), std::make_shared<MemorySource>(wholeNoise(length)));
    for (int combination = 0; combination < combinations; combination += step) {
        StripPlayer player(cache, settingsOf(combination, converter, static_cast<std::int64_t>(length)),
                           inlined);
        use(player);
    }
}

std::uint64_t compiledInBytes(Converter converter) {
    Fingerprint bytes;
    forEachCombination(converter, 1500, &inlinedRenderFunction, 1, [&](StripPlayer& player) {
        std::vector<float> samples(player.outputLength());
        player.renderFloats(samples);
        bytes.add(std::span<const float>(samples));
    });
    return bytes.value();
}

template <class Out>
Out outputAt(std::byte* containers) {
    if constexpr (std::is_pointer_v<Out>)
        return reinterpret_cast<Out>(containers);
    else
        return Out(reinterpret_cast<typename Out::Format*>(containers));
}

/// Written, and summed to what was written.
std::uint64_t tableBytes(FormatId format) {
    Fingerprint bytes;
    for (const Converter converter : converters)
        // A resampler takes far longer to open than so few samples to render.
        forEachCombination(converter, 300, nullptr, converter == Converter::filtering ? 15 : 1,
                           [&](StripPlayer& player) {
                               const std::uint64_t length = player.outputLength();
                               std::vector<std::byte> containers(length * outputFormat(format).bytes);
                               for (const bool summing : {false, true})
                                   withOutputType(format, summing, [&]<class Out>(std::type_identity<Out>) {
                                       Out out = outputAt<Out>(containers.data());
                                       player.seek(OutputSample());
                                       player.render(out, length);
                                   });
                               bytes.add(std::span<const std::byte>(containers));
                           });
    return bytes.value();
}

std::uint64_t rateBytes(int from, int to) {
    RateConvertedSource source(std::make_shared<MemorySource>(wholeNoise(100'000)), from, to);
    std::vector<float> samples(static_cast<std::size_t>(source.length()));
    source.read(0, samples);
    Fingerprint bytes;
    bytes.add(std::span<const float>(samples));
    return bytes.value();
}

std::uint64_t deliveryBytes(Rounding rounding) {
    std::vector<float> samples = wholeNoise(20'000);
    for (std::size_t n = 0; n < samples.size(); n += 7)
        samples[n] *= 5.0F;
    Fingerprint bytes;
    for (const OutputFormat& format : outputFormats) {
        std::vector<std::byte> containers(samples.size() * format.bytes);
        store(format.id, rounding, {.channel = 1, .position = 12345}, samples, containers.data());
        bytes.add(std::span<const std::byte>(containers));
    }
    return bytes.value();
}

/// Three overlapping strips on two tracks, of two sounds.
std::vector<std::vector<float>> mixedChannels() {
    Timeline timeline;
    timeline.length = 96'000;
    const auto strip = [](const char* media, std::int64_t at, double gain, double pan) {
        TimelineStrip made;
        made.media = media;
        made.at = TimelineSample(at);
        made.length = 48'000;
        made.settings.to = 48'000;
        made.settings.fade = {.fadeInSamples = 9000,
                              .fadeOutSamples = 20'000,
                              .fadeInCurve = FadeCurve::power,
                              .fadeOutCurve = FadeCurve::log};
        made.settings.equaliser = {{BandKind::peak, 1000.0, 4.0, 1.0}};
        made.gainDb = gain;
        made.pan = pan;
        return made;
    };
    timeline.tracks = {{"a", {strip("1", 0, -3.0, -30.0), strip("2", 40'000, 20.5, 0.0)}},
                       {"b", {strip("2", 30'000, 1.0, 100.0)}}};
    const auto open = [](const std::string& media) {
        return Media{.channels = {std::make_shared<MemorySource>(wholeNoise(48'000, media == "1" ? 5 : 9)),
                                  std::make_shared<MemorySource>(wholeNoise(48'000, media == "1" ? 6 : 10))}};
    };
    Mixer mixer(std::move(timeline), open, {.inlined = &inlinedRenderFunction});
    std::vector channels(2, std::vector<float>(96'000));
    mixer.render(TimelineSample(), std::array{std::span(channels[0]), std::span(channels[1])});
    return channels;
}

std::uint64_t mixBytes() {
    Fingerprint bytes;
    for (const std::vector<float>& channel : mixedChannels())
        bytes.add(std::span<const float>(channel));
    return bytes.value();
}

/// In thousandths of a decibel, which is finer than anyone states and coarser than a last bit.
std::uint64_t loudnessBytes() {
    const std::vector<std::vector<float>> channels = mixedChannels();
    LoudnessMeter meter(usualLayout(2), 48'000);
    meter.add(std::array{std::span<const float>(channels[0]), std::span<const float>(channels[1])});
    const std::array levels{meter.integrated().value_or(0.0),
                            meter.highest(LoudnessMeter::Window::momentary).value_or(0.0),
                            20.0 * std::log10(meter.truePeak(0)), 20.0 * std::log10(meter.truePeak(1))};
    Fingerprint bytes;
    for (const double level : levels) {
        const std::array rounded{std::llround(level * 1000.0)};
        bytes.add(std::span<const long long>(rounded));
    }
    return bytes.value();
}

} // namespace

std::vector<SelfTestJob> selfTestJobs() {
    std::vector<SelfTestJob> jobs;
    const auto add = [&](const std::string& name, std::function<std::uint64_t()> run) {
        const auto found = released.find(name);
        jobs.push_back({name, found == released.end() ? 0 : found->second, std::move(run)});
    };
    for (const Converter converter : converters)
        add("192 chains, converter " + std::string(words::wordOf(words::converterWords, converter)),
            [converter] { return compiledInBytes(converter); });
    for (const OutputFormat& format : outputFormats)
        add("chains through the tables, " + std::string(format.name),
            [id = format.id] { return tableBytes(id); });
    for (const auto& [from, to] :
         {std::pair(44'100, 48'000), std::pair(48'000, 44'100), std::pair(96'000, 48'000)})
        add("rate " + std::to_string(from) + " to " + std::to_string(to),
            [from = from, to = to] { return rateBytes(from, to); });
    add("delivery, nearest", [] { return deliveryBytes(Rounding::nearest); });
    add("delivery, dithered", [] { return deliveryBytes(Rounding::dithered); });
    add("delivery, truncated", [] { return deliveryBytes(Rounding::truncated); });
    add("mix of two tracks", &mixBytes);
    add("loudness of the mix", &loudnessBytes);
    return jobs;
}

std::string processorLevel() {
#if defined(__x86_64__)
    __builtin_cpu_init();
    const bool v2 = __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt");
    const bool v3 = v2 && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi2") &&
                    __builtin_cpu_supports("fma");
    const bool v4 = v3 && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
    return std::string("x86-64-v") + (v4 ? "4" : v3 ? "3" : v2 ? "2" : "1");
#else
    return "not x86-64";
#endif
}

} // namespace audlmd::command
