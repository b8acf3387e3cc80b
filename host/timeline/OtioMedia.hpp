#pragma once

#include "host/timeline/OtioItem.hpp"
#include "host/timeline/OtioSchema.hpp"

#include <optional>
#include <string>

namespace audlmd::timeline {

/// The path that a target_url means. File URLs are decoded; relative paths start in ReadOptions::folder;
/// other URLs stay as they are. A text without "://" that starts with a slash is a path, with its percent
/// signs; any other is a relative URL, and decoded.
std::string pathOfUrl(const std::string& url, const ReadOptions& options);

/// Reads a clip's active media reference: the path, and why the clip is silent if the reference names no
/// sound. A clip without a reference to a file has its own name, or that of its reference, for a path.
/// Returns the medium's range, from the timeline, else from ReadOptions::media; nothing where neither knows.
/// `shown` is the clip's source_range. Sets item.media, and adds a silence and notes.
std::optional<OtioRange> readMedia(const Json& clip, const std::optional<OtioRange>& shown,
                                   const Where& where, const OtioContext& context, OtioItem& item);

} // namespace audlmd::timeline
