#pragma once

#include "tools/audlmd/files/Markers.hpp"

#include <sndfile.h>

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace audlmd::command {

/// What a sound file says beside its samples.
struct Metadata {
    /// A broadcast extension (EBU Tech 3285) with as long a coding history as libsndfile takes.
    using Broadcast = SF_BROADCAST_INFO_VAR(16 * 1024);

    /// Title, artist and so on, by libsndfile's numbers, SF_STR_TITLE to SF_STR_GENRE.
    std::map<int, std::string> tags;
    /// Of WAV and RF64 files. Its time reference counts frames of the file.
    std::optional<Broadcast> broadcast;
    /// An iXML chunk of a WAV or RF64 file. Empty: none.
    std::string ixml;
    /// Of WAV, RF64 and AIFF files, in the order of their positions, which count frames of the file.
    std::vector<Marker> markers;
    /// Of WAV and RF64 files.
    std::optional<Sampler> sampler;
    /// In frames per second, as relabelled.
    double sampleRate = 0.0;
    /// What of this has no place in the output, in words. Empty in what is read.
    std::vector<std::string> dropped;
    /// The identifiers of chunks with something else in them than samples and the above.
    std::set<std::string> others;
};

/// Throws CommandError for a file that libsndfile does not open, and where reading fails. Open it as a
/// SoundFile first: the messages of that say more.
Metadata readMetadata(const std::filesystem::path& path);
/// Of a file that is open for reading by libsndfile, through the descriptor. Throws std::system_error where
/// reading fails.
Metadata metadataOf(SNDFILE* file, int descriptor);

/// Moves markers and loops to where a part of the file has them in an output at `sampleRate`. What has no
/// place there is `dropped`: markers outside the part, loops that are cut, and all loops of a part at another
/// speed, direction or rate.
void moveInto(Metadata& metadata, const RenderedPart& part, int sampleRate);

/// Has a file of libsndfile's type `type`, which is open for writing, keep the tags that its kind knows, and
/// an AIFF the markers. Before the first sample.
void writeTags(SNDFILE* file, int type, const Metadata& metadata);

/// The chunks of a RIFF file that libsndfile does not write, or not of any length.
std::string riffChunksOf(const Metadata& metadata);

/// What people call a tag, by libsndfile's number.
std::string tagName(int tag);

/// Whether files of libsndfile's type are RIFF files, which have broadcast extensions and iXML chunks.
bool isRiff(int type);

/// What stands in one file and not in the other, in words: "album, genre, cue". Empty: nothing.
std::string missingIn(const Metadata& found, const Metadata& wanted);

} // namespace audlmd::command
