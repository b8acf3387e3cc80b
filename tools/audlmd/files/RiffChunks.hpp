#pragma once

#include "tools/audlmd/files/Markers.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace audlmd::command {

// The bytes of chunks of RIFF files (WAV, RF64). Whatever a chunk claims, nothing beyond its own bytes is
// read.

/// One chunk: identifier and length, then the content. A zero byte that makes the length even is counted:
/// libsndfile does not step over another one in an RF64.
std::string riffChunk(std::string_view identifier, std::string_view content);

/// The identifiers and contents of chunks that follow each other. The last one may be cut off.
std::vector<std::pair<std::string_view, std::string_view>> chunksIn(std::string_view bytes);

/// The markers of a `cue ` chunk, whose names, comments and lengths stand in lists of the type adtl. In the
/// order of their positions.
std::vector<Marker> markersOfChunks(std::string_view cue, const std::vector<std::string>& lists);
/// The same as whole chunks. Empty without markers. Leaves out markers from position 2^32 on, which have no
/// place there.
std::string chunksOfMarkers(const std::vector<Marker>& markers);

/// Nothing where the chunk is too short.
std::optional<Sampler> samplerOfChunk(std::string_view smpl);
std::string chunkOfSampler(const Sampler& sampler);

} // namespace audlmd::command
