#include "host/deliver/WaveformPeaks.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace audlmd {
namespace {

constexpr std::int32_t version = 2;

/// The machine is little-endian, too.
template <class Integer>
void append(std::string& bytes, Integer value) {
    std::array<char, sizeof(Integer)> raw{};
    std::memcpy(raw.data(), &value, sizeof value);
    bytes.append(raw.data(), raw.size());
}

} // namespace

WaveformPeaks::WaveformPeaks(std::size_t channels, int sampleRate, int samplesPerPixel, int bits)
    : channels_(channels), sampleRate_(sampleRate),
      samplesPerPixel_(static_cast<std::size_t>(samplesPerPixel)), bits_(bits), samples_(samplesPerPixel_) {
    if (channels == 0 || sampleRate < 1 || samplesPerPixel < 1 || (bits != 8 && bits != 16))
        throw std::invalid_argument("peaks have 8 or 16 bits, of stretches of samples");
}

void WaveformPeaks::add(std::span<const std::span<const float>> channels) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (std::size_t from = 0; from < channels.front().size();) {
        if (samples_ == samplesPerPixel_) {
            samples_ = 0;
            ranges_.insert(ranges_.end(), channels_, {infinity, -infinity});
        }
        const std::size_t count = std::min(samplesPerPixel_ - samples_, channels.front().size() - from);
        for (std::size_t channel = 0; channel < channels_; ++channel) {
            Range& range = ranges_[ranges_.size() - channels_ + channel];
            for (const float sample : channels[channel].subspan(from, count)) {
                const float heard = std::isnan(sample) ? 0.0F : sample;
                range.lowest = std::min(range.lowest, heard);
                range.highest = std::max(range.highest, heard);
            }
        }
        samples_ += count;
        from += count;
    }
}

int WaveformPeaks::step(float sample) const {
    const float scale = bits_ == 8 ? 0x1p7F : 0x1p15F;
    return static_cast<int>(std::lround(std::clamp(sample * scale, -scale, scale - 1.0F)));
}

std::string WaveformPeaks::binary() const {
    std::string bytes;
    append(bytes, version);
    append(bytes, std::uint32_t{bits_ == 8 ? 1U : 0U});
    append(bytes, std::int32_t{sampleRate_});
    append(bytes, static_cast<std::int32_t>(samplesPerPixel_));
    append(bytes, static_cast<std::uint32_t>(pixels()));
    append(bytes, static_cast<std::int32_t>(channels_));
    for (const Range& range : ranges_)
        for (const float sample : {range.lowest, range.highest})
            if (bits_ == 8)
                append(bytes, static_cast<std::int8_t>(step(sample)));
            else
                append(bytes, static_cast<std::int16_t>(step(sample)));
    return bytes;
}

std::string WaveformPeaks::json() const {
    std::string text =
        "{\"version\":" + std::to_string(version) + ",\"channels\":" + std::to_string(channels_) +
        ",\"sample_rate\":" + std::to_string(sampleRate_) +
        ",\"samples_per_pixel\":" + std::to_string(samplesPerPixel_) + ",\"bits\":" + std::to_string(bits_) +
        ",\"length\":" + std::to_string(pixels()) + ",\"data\":[";
    for (const Range& range : ranges_)
        text += (&range == ranges_.data() ? "" : ",") + std::to_string(step(range.lowest)) + "," +
                std::to_string(step(range.highest));
    return text + "]}\n";
}

} // namespace audlmd
