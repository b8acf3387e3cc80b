#include "tools/audlmd/files/PeaksFile.hpp"

#include "tools/audlmd/files/SampleLayouts.hpp"

namespace audlmd::command {

PeaksFile::PeaksFile(const PeaksOptions& options, const OutputLayout& layout)
    : options_(options), format_(layout.format), samples_(layout.speakers.size()) {
    if (!options_.file.empty())
        peaks_.emplace(samples_.size(), layout.sampleRate, options_.samplesPerPixel, options_.bits);
}

void PeaksFile::take(const Chunk& chunk) {
    if (!peaks_)
        return;
    for (std::size_t channel = 0; channel < samples_.size(); ++channel) {
        samples_[channel].resize(chunk.frames);
        load(format_, chunk.channels[channel].data(), samples_[channel]);
    }
    peaks_->add(std::vector<std::span<const float>>(samples_.begin(), samples_.end()));
}

void PeaksFile::write() const {
    if (peaks_)
        writeOutput(OutputPath(options_.file), options_.isJson() ? peaks_->json() : peaks_->binary());
}

} // namespace audlmd::command
