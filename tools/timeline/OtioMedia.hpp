#pragma once

#include "tools/timeline/OtioItem.hpp"
#include "tools/timeline/OtioSchema.hpp"

#include <optional>
#include <string>

namespace audlmd::timeline {

/// The path that a target_url means. File URLs are decoded; relative paths start in ReadOptions::folder;
/// other URLs stay as they are. Trap: a text without "://" is taken for a path, with its percent signs.
std::string pathOfUrl(const std::string& url, const ReadOptions& options);

/// Reads a clip's active media reference: the path, and why the clip is silent if the reference names no
/// sound. Returns the medium's range, from the file, else from ReadOptions::media; nothing where neither
/// knows. Sets item.media and item.sound.silence, and no other member.
std::optional<OtioRange> readMedia(const Json& clip, const Where& where, const OtioContext& context,
                                   OtioItem& item);

} // namespace audlmd::timeline
