#pragma once

#include "tools/audlmd/files/OutputFormat.hpp"

#include <sndfile.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace audlmd::command {

/// A kind of audio file that holds samples as they are, chosen by the extension of its name.
struct Container {
    std::string_view name;
    /// Lower case; empty where there is only one.
    std::string_view extension;
    std::string_view otherExtension;
    /// libsndfile's number of the container, with the byte order that it is written in.
    int type;
    /// Whether samples stand in it in the byte order of the library's containers.
    bool littleEndian;
    /// Largest length of the sample data that its header can state; 0 is without limit.
    std::uint64_t maxDataBytes;
};

/// The container that the extension of `path` names, or null.
const Container* findContainer(const std::filesystem::path& path);

/// The same. Throws CommandError, naming the known ones, for any other extension.
const Container& containerOf(const std::filesystem::path& path);

/// Headerless samples.
const Container& rawContainer();

/// libsndfile's number of the format in the container, or nothing where the container does not hold it.
std::optional<int> subtypeIn(const Container& container, FormatId format);

/// The format of a file that libsndfile describes as `type`, or nothing where the library has no such format.
std::optional<FormatId> formatOf(int type);

/// The extensions of the containers that hold the format, for a message.
std::string extensionsHolding(FormatId format);

/// The fullest format that the container holds.
FormatId defaultFormatOf(const Container& container);

/// Throws CommandError, naming the containers that would do, unless the file can hold so much of the format.
void requireHolds(const Container& container, FormatId format, std::uint64_t dataBytes,
                  const std::filesystem::path& path);

} // namespace audlmd::command
