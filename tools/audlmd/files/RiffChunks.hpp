#pragma once

#include "tools/audlmd/files/Markers.hpp"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace audlmd::command {

// The bytes of chunks of RIFF files (WAV, RF64). Whatever a chunk claims, nothing is taken for its content
// that is not there.

/// The contents of the chunks of a file, by identifier, in their order.
using FileChunks = std::map<std::string, std::vector<std::string>>;

/// The chunks of a WAV or RF64 file. Those that are not to be read, and those beyond 16 MiB, are there
/// without their contents. None of a file of another kind, or in the other byte order (RIFX). Throws
/// std::system_error where the file cannot be read.
FileChunks readRiffChunks(int descriptor, std::span<const std::string_view> toBeRead);

/// The first chunk of an identifier. Empty: there is none.
std::string contentOf(const FileChunks& chunks, const std::string& identifier);

/// One chunk: identifier and length, then the content, and a zero byte behind an odd length.
std::string riffChunk(std::string_view identifier, std::string_view content);

/// The identifiers and contents of chunks that follow each other. The last one may be cut off.
std::vector<std::pair<std::string_view, std::string_view>> chunksIn(std::string_view bytes);

/// The markers of the first `cue ` chunk, whose names, comments and lengths stand in lists of the type adtl.
/// In the order of their positions.
std::vector<Marker> markersOfChunks(const FileChunks& chunks);
/// The same as whole chunks. Empty without markers. Leaves out markers from position 2^32 on, which have no
/// place there.
std::string chunksOfMarkers(const std::vector<Marker>& markers);

/// Nothing where the chunk is too short.
std::optional<Sampler> samplerOfChunk(std::string_view smpl);
std::string chunkOfSampler(const Sampler& sampler);

} // namespace audlmd::command
