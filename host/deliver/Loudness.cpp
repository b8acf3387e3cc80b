#include "host/deliver/Loudness.hpp"

#include <ebur128.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <numeric>
#include <stdexcept>
#include <string>

namespace audlmd {
namespace {

constexpr std::size_t mostChannels = 64;
constexpr int lowestRate = 8000;

/// From energy to loudness, in dB (ITU-R BS.1770-4).
constexpr double loudnessOfOne = -0.691;

/// libebur128's speakers, by Speaker, where the layout has side speakers. Those without an elevation or a
/// place of their own in the standard stand at the nearest angle.
constexpr std::array<int, 19> positions{
    EBUR128_LEFT,           EBUR128_RIGHT, EBUR128_CENTER, EBUR128_UNUSED, EBUR128_Mp135,
    EBUR128_Mm135,          EBUR128_MpSC,  EBUR128_MmSC,   EBUR128_Mp180,  EBUR128_LEFT_SURROUND,
    EBUR128_RIGHT_SURROUND, EBUR128_Tp000, EBUR128_Up045,  EBUR128_Up000,  EBUR128_Um045,
    EBUR128_Up135,          EBUR128_Up180, EBUR128_Um135,  EBUR128_LEFT};

int positionOf(Speaker speaker, bool hasSides) {
    if (!hasSides && (speaker == Speaker::rearLeft || speaker == Speaker::rearRight))
        return speaker == Speaker::rearLeft ? EBUR128_LEFT_SURROUND : EBUR128_RIGHT_SURROUND;
    return positions.at(static_cast<std::size_t>(speaker));
}

} // namespace

struct LoudnessMeter::Impl {
    struct Destroy {
        void operator()(ebur128_state* old) const { ebur128_destroy(&old); }
    };

    Impl(const ChannelLayout& layout, int sampleRate, TruePeak truePeak)
        : tenth((static_cast<std::size_t>(sampleRate) + 5) / 10), missing(tenth),
          interleaved(tenth * layout.size()) {
        const int peaks = truePeak == TruePeak::measured ? EBUR128_MODE_TRUE_PEAK : 0;
        state.reset(ebur128_init(static_cast<unsigned>(layout.size()), static_cast<unsigned long>(sampleRate),
                                 static_cast<int>(EBUR128_MODE_I) | EBUR128_MODE_LRA | peaks));
        if (state == nullptr)
            throw std::bad_alloc();
        const bool hasSides = std::ranges::find(layout, Speaker::sideLeft) != layout.end() ||
                              std::ranges::find(layout, Speaker::sideRight) != layout.end();
        for (unsigned channel = 0; channel < layout.size(); ++channel)
            ebur128_set_channel(state.get(), channel, positionOf(layout[channel], hasSides));
    }

    /// Takes samples that do not reach beyond the end of the tenth.
    void add(std::span<const std::span<const float>> channels, std::size_t first, std::size_t frames) {
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            for (std::size_t n = 0; n < frames; ++n) {
                const float sample = channels[channel][first + n];
                interleaved[n * channels.size() + channel] = std::isfinite(sample) ? sample : 0.0F;
            }
        if (ebur128_add_frames_float(state.get(), interleaved.data(), frames) != EBUR128_SUCCESS)
            throw std::bad_alloc();
        missing -= frames;
        if (missing != 0)
            return;
        missing = tenth;
        double loudness = 0.0;
        ebur128_loudness_window(state.get(), 100, &loudness);
        energies.push_back(std::pow(10.0, (loudness - loudnessOfOne) / 10.0));
    }

    std::unique_ptr<ebur128_state, Destroy> state;
    /// A tenth of a second, in frames, and how many are missing before the next is whole.
    std::size_t tenth;
    std::size_t missing;
    std::vector<float> interleaved;
    /// Of each whole tenth, so that a window is summed from as many as it is long.
    std::vector<double> energies;
};

LoudnessMeter::LoudnessMeter(const ChannelLayout& layout, int sampleRate, TruePeak truePeak) {
    if (layout.empty() || layout.size() > mostChannels)
        throw std::invalid_argument("it is measured of 1 to 64 channels, not of " +
                                    std::to_string(layout.size()));
    if (sampleRate < lowestRate)
        throw std::invalid_argument("it is measured from 8000 Hz on, not at " + std::to_string(sampleRate) +
                                    " Hz");
    impl_ = std::make_unique<Impl>(layout, sampleRate, truePeak);
}

LoudnessMeter::~LoudnessMeter() = default;

void LoudnessMeter::add(std::span<const std::span<const float>> channels) {
    for (std::size_t first = 0; first < channels.front().size();) {
        const std::size_t frames = std::min(impl_->missing, channels.front().size() - first);
        impl_->add(channels, first, frames);
        first += frames;
    }
}

std::optional<double> LoudnessMeter::integrated() const {
    if (impl_->energies.size() < static_cast<std::size_t>(Window::momentary))
        return std::nullopt;
    double loudness = 0.0;
    ebur128_loudness_global(impl_->state.get(), &loudness);
    return loudness;
}

std::optional<double> LoudnessMeter::range() const {
    // libebur128 takes a short-term window each second: a range needs two.
    if (impl_->energies.size() < static_cast<std::size_t>(Window::shortTerm) + 10)
        return std::nullopt;
    double range = 0.0;
    if (ebur128_loudness_range(impl_->state.get(), &range) != EBUR128_SUCCESS)
        throw std::bad_alloc();
    return range;
}

std::vector<double> LoudnessMeter::course(Window window) const {
    const auto tenths = static_cast<std::ptrdiff_t>(window);
    std::vector<double> course;
    for (auto end = impl_->energies.begin(); end != impl_->energies.end();)
        if (++end - impl_->energies.begin() >= tenths) {
            const double energy = std::accumulate(end - tenths, end, 0.0) / static_cast<double>(tenths);
            course.push_back(10.0 * std::log10(energy) + loudnessOfOne);
        }
    return course;
}

std::optional<double> LoudnessMeter::highest(Window window) const {
    const std::vector<double> all = course(window);
    return all.empty() ? std::nullopt : std::optional(std::ranges::max(all));
}

double LoudnessMeter::truePeak(std::size_t channel) const {
    double peak = 0.0;
    ebur128_true_peak(impl_->state.get(), static_cast<unsigned>(channel), &peak);
    return peak;
}

} // namespace audlmd
