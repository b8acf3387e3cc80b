#pragma once

#include "host/signal/StripPlayer.hpp"
#include "tools/plot/Figure.hpp"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

// The pictures of `audlmd plot`. Gains and levels are rendered by the library, not computed beside it.
// Settings that a player refuses throw std::invalid_argument.

/// Is called again and again while a long figure is made, with the number of samples done and of all samples.
using Watcher = std::function<void(std::int64_t doneSamples, std::int64_t allSamples, int sampleRate)>;

/// The three gain curves over the u-values of a fader, as linear gain and in decibels.
plot::Figure curvesFigure();

/// The gain over time of fades and levels, linear and in decibels. The range has `length` samples.
plot::Figure envelopeFigure(const StripSettings& settings, std::int64_t length, int sampleRate,
                            const Watcher& watcher);

/// The level over time of the settings' automation, from 0 to `length` samples, with the nodes.
plot::Figure automationFigure(const StripSettings& settings, std::int64_t length, int sampleRate,
                              const Watcher& watcher);

/// A band, and the text that stands for the band in the legend.
struct NamedBand {
    std::string name;
    EqualiserBand band;
};

/// The frequency response of each band and of all bands together, as the spectra of responses to an impulse.
plot::Figure equaliserFigure(const std::vector<NamedBand>& bands, int sampleRate);

// Of a sound file. They throw CommandError for an empty file, an unknown channel and more than 64 channels in
// one picture, and SoundFileError.

/// The spectrogram of each channel, or of one, counted from 1. `floor` is the level of the darkest colour, in
/// dB re full scale.
plot::Figure spectrogramFigure(const std::filesystem::path& path, std::optional<int> channel, double floor,
                               const Watcher& watcher);

/// The waveform of each channel, or of one, counted from 1.
plot::Figure waveformFigure(const std::filesystem::path& path, std::optional<int> channel,
                            const Watcher& watcher);

/// The loudness of the whole programme over time, each value at the end of its window. In long programmes a
/// point is the loudest of several. Throws CommandError for a programme that is shorter than a window.
plot::Figure loudnessFigure(const std::filesystem::path& path, const Watcher& watcher);

} // namespace audlmd::command
