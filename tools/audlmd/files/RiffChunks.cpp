#include "tools/audlmd/files/RiffChunks.hpp"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <system_error>
#include <unistd.h>

namespace audlmd::command {
namespace {

static_assert(std::endian::native == std::endian::little,
              "RIFF files have the bytes of numbers in this order");

constexpr std::size_t cuePointBytes = 24;
constexpr std::size_t loopBytes = 24;
/// Of an ltxt chunk, before its text.
constexpr std::size_t ltxtBytes = 20;
constexpr std::int64_t mostPosition = std::numeric_limits<std::uint32_t>::max();

/// The four bytes from `at` on, which must be there.
std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.data() + at, sizeof number);
    return number;
}

std::string bytesOf(std::int64_t number) {
    const auto value = static_cast<std::uint32_t>(std::clamp<std::int64_t>(number, 0, mostPosition));
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

std::string textIn(std::string_view bytes) {
    return std::string(bytes.substr(0, bytes.find('\0')));
}

/// Takes over what a chunk of a list says of a marker.
void describe(Marker& marker, std::string_view kind, std::string_view content) {
    if (kind == "labl")
        marker.name = textIn(content.substr(4));
    else if (kind == "note")
        marker.comment = textIn(content.substr(4));
    else if (kind == "ltxt" && content.size() >= ltxtBytes) {
        marker.length = numberAt(content, 4);
        if (marker.name.empty())
            marker.name = textIn(content.substr(ltxtBytes));
    }
}

/// Those of so many bytes that are there. Throws std::system_error.
std::string readAt(int descriptor, std::int64_t position, std::int64_t count) {
    std::string bytes(static_cast<std::size_t>(count), '\0');
    std::int64_t filled = 0;
    for (ssize_t got = 1; got != 0 && filled < count; filled += std::max<ssize_t>(got, 0)) {
        got = pread(descriptor, bytes.data() + filled, static_cast<std::size_t>(count - filled),
                    position + filled);
        if (got < 0 && errno != EINTR)
            throw std::system_error(errno, std::generic_category());
    }
    bytes.resize(static_cast<std::size_t>(filled));
    return bytes;
}

/// Behind samples whose length is wrong, anything may stand.
bool isIdentifier(std::string_view text) {
    return text.size() == 4 && std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

} // namespace

FileChunks readRiffChunks(int descriptor, std::span<const std::string_view> toBeRead) {
    constexpr std::int64_t mostContent = std::int64_t{1} << 24;
    // A longer chunk is in no file, and nothing behind it can be found.
    constexpr std::int64_t mostChunk = std::int64_t{1} << 60;
    constexpr std::int64_t isIn64Bits = 0xFFFFFFFF;
    FileChunks chunks;
    const std::string start = readAt(descriptor, 0, 4);
    std::int64_t dataBytes = isIn64Bits;
    std::int64_t position = 12;
    while (start == "RIFF" || start == "RF64") {
        const std::string head = readAt(descriptor, position, 8);
        const std::string identifier = head.substr(0, 4);
        if (head.size() < 8 || !isIdentifier(identifier))
            break;
        position += 8;
        std::int64_t size = numberAt(head, 4);
        if (identifier == "data" && size == isIn64Bits)
            size = dataBytes;
        if (identifier == "ds64")
            // Behind that of the file.
            readAt(descriptor, position + 8, 8).copy(reinterpret_cast<char*>(&dataBytes), sizeof dataBytes);
        const bool isRead = size <= mostContent && std::ranges::find(toBeRead, identifier) != toBeRead.end();
        chunks[identifier].push_back(isRead ? readAt(descriptor, position, size) : "");
        if (size < 0 || size > mostChunk)
            break;
        position += size + size % 2;
    }
    return chunks;
}

std::string riffChunk(std::string_view identifier, std::string_view content) {
    return std::string(identifier) + bytesOf(std::ssize(content)) + std::string(content) +
           std::string(content.size() % 2, '\0');
}

std::vector<std::pair<std::string_view, std::string_view>> chunksIn(std::string_view bytes) {
    std::vector<std::pair<std::string_view, std::string_view>> chunks;
    while (bytes.size() >= 8) {
        const std::string_view content = bytes.substr(8, numberAt(bytes, 4));
        chunks.emplace_back(bytes.substr(0, 4), content);
        bytes.remove_prefix(std::min(8 + content.size() + content.size() % 2, bytes.size()));
    }
    return chunks;
}

std::string contentOf(const FileChunks& chunks, const std::string& identifier) {
    const auto place = chunks.find(identifier);
    return place != chunks.end() ? place->second.front() : "";
}

std::vector<Marker> markersOfChunks(const FileChunks& chunks) {
    std::vector<Marker> markers;
    std::map<std::uint32_t, std::size_t> places;
    const std::string cue = contentOf(chunks, "cue ");
    const std::size_t count = cue.size() < 4 ? 0 : numberAt(cue, 0);
    for (std::size_t at = 4; at + cuePointBytes <= cue.size() && markers.size() < count;
         at += cuePointBytes) {
        places[numberAt(cue, at)] = markers.size();
        markers.push_back({.position = numberAt(cue, at + 20), .name = {}});
    }
    if (const auto lists = chunks.find("LIST"); lists != chunks.end())
        for (const std::string_view list : lists->second)
            if (list.starts_with("adtl"))
                for (const auto& [kind, content] : chunksIn(list.substr(4)))
                    if (content.size() >= 4 && places.contains(numberAt(content, 0)))
                        describe(markers[places[numberAt(content, 0)]], kind, content);
    std::ranges::stable_sort(markers, {}, &Marker::position);
    return markers;
}

std::string chunksOfMarkers(const std::vector<Marker>& markers) {
    std::string points;
    // All names come first: some readers look no further than the first chunk of another kind.
    std::string names;
    std::string others;
    std::int64_t number = 0;
    for (const Marker& marker : markers) {
        if (marker.position > mostPosition)
            continue;
        const std::string identifier = bytesOf(++number);
        points += identifier + bytesOf(marker.position) + "data" + bytesOf(0) + bytesOf(0) +
                  bytesOf(marker.position);
        if (!marker.name.empty())
            names += riffChunk("labl", identifier + marker.name + '\0');
        if (!marker.comment.empty())
            others += riffChunk("note", identifier + marker.comment + '\0');
        if (marker.length != 0)
            // Language and code page are not known.
            others += riffChunk("ltxt", identifier + bytesOf(marker.length) + "rgn " + std::string(8, '\0'));
    }
    if (number == 0)
        return "";
    const std::string list = names + others;
    return riffChunk("cue ", bytesOf(number) + points) +
           (list.empty() ? "" : riffChunk("LIST", "adtl" + list));
}

/// Loops end with their last sample.
std::optional<Sampler> samplerOfChunk(std::string_view smpl) {
    constexpr std::size_t headerBytes = 36;
    if (smpl.size() < headerBytes)
        return std::nullopt;
    Sampler sampler;
    std::memcpy(sampler.settings.data(), smpl.data(), sizeof sampler.settings);
    const std::uint32_t count = numberAt(smpl, 28);
    const std::uint32_t restBytes = numberAt(smpl, 32);
    smpl.remove_prefix(headerBytes);
    while (smpl.size() >= loopBytes && sampler.loops.size() < count) {
        sampler.loops.push_back(
            {.from = numberAt(smpl, 8),
             .to = std::int64_t{numberAt(smpl, 12)} + 1,
             .settings = {numberAt(smpl, 0), numberAt(smpl, 4), numberAt(smpl, 16), numberAt(smpl, 20)}});
        smpl.remove_prefix(loopBytes);
    }
    sampler.rest = smpl.substr(0, restBytes);
    return sampler;
}

std::string chunkOfSampler(const Sampler& sampler) {
    std::string content;
    for (const std::uint32_t number : sampler.settings)
        content += bytesOf(number);
    content += bytesOf(std::ssize(sampler.loops)) + bytesOf(std::ssize(sampler.rest));
    for (const SampleLoop& loop : sampler.loops)
        content += bytesOf(loop.settings[0]) + bytesOf(loop.settings[1]) + bytesOf(loop.from) +
                   bytesOf(loop.to - 1) + bytesOf(loop.settings[2]) + bytesOf(loop.settings[3]);
    return riffChunk("smpl", content + sampler.rest);
}

} // namespace audlmd::command
