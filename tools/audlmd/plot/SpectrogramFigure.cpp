#include "host/cache/SoundFile.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/plot/Figures.hpp"
#include "tools/plot/Spectrogram.hpp"

#include <algorithm>
#include <string>
#include <vector>

namespace audlmd::command {

using namespace plot;

Figure spectrogramFigure(const std::filesystem::path& path, int channel, double floor,
                         const Watcher& watcher) {
    SoundFile file(path);
    if (file.frames() == 0)
        throw CommandError("'" + path.string() + "' holds no samples, so there is nothing to draw");
    if (channel < 1 || channel > file.channels())
        throw CommandError("--channel " + std::to_string(channel) + ": '" + path.string() + "' has " +
                           std::to_string(file.channels()) + " channel(s), counted from 1");

    Spectrogram spectrogram(file.frames(), file.sampleRate());
    std::vector<float> samples(65536);
    for (std::int64_t position = 0; position < file.frames();) {
        const auto count = std::min(static_cast<std::int64_t>(samples.size()), file.frames() - position);
        const std::span<float> portion(samples.data(), static_cast<std::size_t>(count));
        file.read(channel - 1, position, portion);
        spectrogram.add(portion);
        position += count;
        watcher(position, file.frames(), file.sampleRate());
    }
    Figure figure;
    figure.title = words::printable(path.filename().string());
    figure.subtitle = "Channel " + std::to_string(channel) + " of " + std::to_string(file.channels()) + ", " +
                      std::to_string(file.sampleRate()) + " Hz";
    figure.charts = {spectrogram.chart(floor)};
    figure.pixelsPerPoint = 1.5;
    return figure;
}

} // namespace audlmd::command
