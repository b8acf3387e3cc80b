#include "host/media/WavStream.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace audlmd {
namespace {

/// Little-endian, as the processors that this is built for.
template <class Number>
Number numberAt(std::string_view bytes, std::size_t at) {
    Number number{};
    std::memcpy(&number, bytes.substr(at, sizeof number).data(), sizeof number);
    return number;
}

ChannelLayout layoutOfMask(std::uint32_t mask, int channels) {
    constexpr auto speakers = static_cast<std::uint32_t>(Speaker::unknown);
    const auto count = static_cast<std::size_t>(channels);
    ChannelLayout layout;
    for (std::uint32_t bit = 0; bit < speakers; ++bit)
        if ((mask >> bit & 1U) != 0)
            layout.push_back(static_cast<Speaker>(bit));
    return layout.size() == count && mask >> speakers == 0 ? layout : unknownLayout(count);
}

/// A format chunk, extended as ffmpeg writes it for floats.
ForeignFormat formatIn(std::string_view chunk) {
    constexpr std::size_t extended = 40;
    constexpr std::uint16_t bits = 32;
    if (chunk.size() < extended || numberAt<std::uint16_t>(chunk, 14) != bits)
        throw std::domain_error("ffmpeg does not print floats of 32 bits");
    const int channels = numberAt<std::uint16_t>(chunk, 2);
    return {.channels = channels,
            .sampleRate = numberAt<std::int32_t>(chunk, 4),
            .layout = layoutOfMask(numberAt<std::uint32_t>(chunk, 20), channels)};
}

struct Header {
    ForeignFormat format;
    /// In bytes.
    std::size_t length = 0;
};

/// Nothing where the header does not end yet.
std::optional<Header> headerIn(std::string_view bytes) {
    constexpr std::size_t firstChunk = 12;
    constexpr std::size_t chunkHeader = 8;
    constexpr std::size_t most = 65536;
    Header header{.format = {}, .length = firstChunk};
    while (bytes.size() >= header.length + chunkHeader) {
        const std::string_view name = bytes.substr(header.length, 4);
        const std::size_t length = numberAt<std::uint32_t>(bytes, header.length + 4);
        header.length += chunkHeader;
        if (name == "data" && header.format.channels > 0)
            return header;
        if (!bytes.starts_with("RIFF") || length > most)
            throw std::domain_error("ffmpeg prints no WAV");
        if (bytes.size() < header.length + length)
            return std::nullopt;
        if (name == "fmt ")
            header.format = formatIn(bytes.substr(header.length, length));
        header.length += length + length % 2;
    }
    return std::nullopt;
}

} // namespace

void WavStream::take(std::span<const std::byte> bytes) {
    if (hasBegun_)
        return take_(bytes);
    const std::size_t before = header_.size();
    header_.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const std::optional<Header> header = headerIn(header_);
    if (!header)
        return;
    hasBegun_ = true;
    begin_(header->format);
    header_.clear();
    take_(bytes.subspan(header->length - before));
}

} // namespace audlmd
