#pragma once

#include "tools/audlmd/files/OutputFormat.hpp"

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace audlmd::command {

/// A kind of audio file. The extension of a name chooses the kind.
struct FileKind {
    std::string_view name;
    /// Lower case, without the point. A kind with one extension leaves the other one empty.
    std::string_view extension;
    std::string_view otherExtension;
    /// libsndfile's SF_FORMAT_ number of the kind, with the byte order for writing.
    int type;
    /// Whether the file holds samples in the renderer's byte order, so that they are written without
    /// conversion.
    bool littleEndian;
    /// The most sample data that the header can state, in bytes. 0: no limit.
    std::uint64_t maxDataBytes;
    /// libsndfile's SF_FORMAT_ number of the encoding where that keeps no sample as it is. 0: every bit is
    /// kept. Such a kind takes f32 only.
    int lossy = 0;
};

/// The kind that the extension of `path` names, in any case of letters, or null. Use this where a name
/// without a known extension is allowed.
const FileKind* findFileKind(const std::filesystem::path& path);

/// The kind that the extension of `path` names. Throws CommandError, naming the known extensions, for any
/// other.
const FileKind& fileKindOf(const std::filesystem::path& path);

/// The kind that an extension names, with or without its point. Throws CommandError, naming `option` and the
/// known extensions, for any other text.
const FileKind* parseFileKind(std::string_view text, std::string_view option);

/// Samples without a header, little-endian. Use this for streams, whose headers could not be completed at the
/// end.
const FileKind& rawFileKind();

/// libsndfile's SF_FORMAT_ number of the format in files of the kind, or nothing where the kind does not hold
/// the format. Trap: s24in32 stands in headerless files only.
std::optional<int> subtypeIn(const FileKind& kind, FormatId format);

/// The format of the samples in a file that libsndfile describes as `type`, or nothing where the library has
/// no such format. Only the bits of SF_FORMAT_SUBMASK are looked at.
std::optional<FormatId> formatOf(int type);

/// The format that loses least of a 32-bit float: f32, or s24 where the kind does not hold f32.
FormatId defaultFormatOf(const FileKind& kind);

/// Throws CommandError, naming the kinds that would do, unless the kind holds the format and so many bytes of
/// samples. `path` is for the message. Call this before rendering, so that a long render does not fail at its
/// end.
void requireHolds(const FileKind& kind, FormatId format, std::uint64_t dataBytes,
                  const std::filesystem::path& path);

} // namespace audlmd::command
