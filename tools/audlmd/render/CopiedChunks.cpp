#include "tools/audlmd/render/CopiedChunks.hpp"

#include "tools/audlmd/files/SampleLayouts.hpp"

#include <algorithm>
#include <span>

namespace audlmd::command {

CopiedChunks::CopiedChunks(ContainerFile& file, const StripSettings& settings)
    : file_(file), from_(settings.from), to_(settings.to), reverse_(settings.reverse) {}

void CopiedChunks::fill(std::size_t /*part*/, Chunk& chunk) {
    constexpr std::size_t bytes = sizeof(Aud::SampleS32);
    const auto frames = static_cast<std::int64_t>(chunk.frames);
    interleaved_.resize(chunk.frames * chunk.channels.size() * bytes);
    file_.goTo((reverse_ ? to_ - (chunk.from + frames) : from_ + chunk.from).number());
    file_.read(FormatId::s32, interleaved_.data(), chunk.frames);
    std::vector<std::byte*> channels;
    for (std::vector<std::byte>& channel : chunk.channels)
        channels.push_back(channel.data());
    deinterleave(interleaved_.data(), bytes, chunk.frames, channels);
    if (reverse_)
        for (std::byte* const channel : channels)
            std::ranges::reverse(std::span(reinterpret_cast<Aud::SampleS32*>(channel), chunk.frames));
}

} // namespace audlmd::command
