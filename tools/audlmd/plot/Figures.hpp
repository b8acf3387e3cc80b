#pragma once

#include "standalone/signal/StripPlayer.hpp"
#include "tools/audlmd/plot/Chart.hpp"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// The pictures of `audlmd plot`. What they show is what the library makes of the settings: it is rendered,
/// not computed beside it. Settings that a player refuses throw std::invalid_argument.
namespace audlmd::plot {

/// Is told how far a long figure has come.
using Watcher = std::function<void(std::int64_t doneSamples, std::int64_t allSamples, int sampleRate)>;

/// The three gain curves over the u-values of a fader, as linear gain and in decibels.
Figure curvesFigure();

/// The gain over time of fades and levels on a range of `length` samples, linear and in decibels.
Figure envelopeFigure(const StripSettings& settings, std::int64_t length, int sampleRate,
                      const Watcher& watcher);

/// The level over time of the settings' automation, from 0 to `length` samples, with its nodes.
Figure automationFigure(const StripSettings& settings, std::int64_t length, int sampleRate,
                        const Watcher& watcher);

struct NamedBand {
    std::string name;
    EqualiserBand band;
};

/// The frequency responses of bands and of their sum, from impulses at this sample rate.
Figure equaliserFigure(const std::vector<NamedBand>& bands, int sampleRate);

/// One channel of a sound file, counted from 1, down to a level of `floor` dB re full scale. Throws
/// command::CommandError and SoundFileError.
Figure spectrogramFigure(const std::filesystem::path& path, int channel, double floor,
                         const Watcher& watcher);

} // namespace audlmd::plot
