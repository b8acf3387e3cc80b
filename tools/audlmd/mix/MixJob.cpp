#include "tools/audlmd/mix/MixJob.hpp"

#include "host/signal/Unclipped.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"

#include <algorithm>
#include <future>
#include <type_traits>

namespace audlmd::command {
namespace {

/// Frames. Long enough that starting a thread for each chunk does not count.
constexpr std::size_t chunkFrames = 32768;

template <class Format>
void store(std::span<const float> samples, std::byte* containers) {
    auto* out = reinterpret_cast<Format*>(containers);
    convertBlock(samples.data(), samples.size(), out);
}

template <class Format>
void choose(std::type_identity<Format*>, void (*&chosen)(std::span<const float>, std::byte*)) {
    chosen = &store<Format>;
}

} // namespace

MixJob::MixJob(Mixer& mixer, TimelineSpan span, const OutputLayout& layout)
    : mixer_(mixer), span_(span), layout_(layout),
      chunks_((static_cast<std::size_t>(layout.frames) + chunkFrames - 1) / chunkFrames) {
    const auto channels = static_cast<std::size_t>(layout.channels);
    for (Channels& mixed : mixed_)
        mixed.assign(channels, std::vector<float>(chunkFrames));
    stored_.assign(channels, std::vector<std::byte>(chunkFrames * outputFormat(layout.format).bytes));
    interleaved_.resize(chunkFrames * layout.frameBytes());
    withOutputType(layout.format, false, [this]<class Out>(std::type_identity<Out> type) {
        if constexpr (std::is_pointer_v<Out>)
            choose(type, store_);
    });
}

void MixJob::run(OutputFile& output, const std::function<void(std::int64_t)>& written) {
    mix(0);
    for (std::size_t chunk = 0; chunk < chunks_; ++chunk) {
        std::future<void> next;
        if (chunk + 1 < chunks_) {
            const EndingSignalsBlocked blocked;
            next = std::async(std::launch::async, [this, chunk] { mix(chunk + 1); });
        }
        write(chunk, output);
        if (next.valid())
            next.get();
        // Here no thread uses the mixer, so that `written` may ask for a report.
        written(static_cast<std::int64_t>(chunk * chunkFrames + framesIn(chunk)));
    }
}

std::size_t MixJob::framesIn(std::size_t chunk) const {
    return std::min(chunkFrames, static_cast<std::size_t>(layout_.frames) - chunk * chunkFrames);
}

void MixJob::mix(std::size_t chunk) {
    std::vector<std::span<float>> channels;
    for (std::vector<float>& channel : mixed_[chunk % 2])
        channels.push_back(std::span(channel).first(framesIn(chunk)));
    mixer_.render(span_.from + static_cast<std::int64_t>(chunk * chunkFrames), channels);
}

void MixJob::write(std::size_t chunk, OutputFile& output) {
    const Channels& mixed = mixed_[chunk % 2];
    const std::size_t frames = framesIn(chunk);
    std::vector<const std::byte*> channels;
    for (std::size_t channel = 0; channel < mixed.size(); ++channel) {
        store_(std::span(mixed[channel]).first(frames), stored_[channel].data());
        channels.push_back(stored_[channel].data());
    }
    interleave(channels, outputFormat(layout_.format).bytes, frames, interleaved_.data());
    output.write(interleaved_.data(), frames);
}

} // namespace audlmd::command
