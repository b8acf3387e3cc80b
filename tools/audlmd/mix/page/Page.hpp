#pragma once

#include "host/mix/Media.hpp"
#include "tools/audlmd/files/OutputFile.hpp"
#include "tools/audlmd/mix/page/PageData.hpp"

#include <cstdint>
#include <functional>

namespace audlmd::command {

/// In bytes. A smaller sound stands in the page itself, so that the page can be sent alone.
inline constexpr std::uintmax_t largestEmbedded = 2'000'000;

/// Writes the page: one HTML file that loads nothing but the sound beside it. `sound` is null where nothing
/// was mixed; the sound is written by then. Reads the material that sounds once, as drawTimeline() does.
/// Throws CommandError.
void writePage(const OutputPath& page, const OutputTarget* sound, const PageSubject& subject,
               const OpenMedia& openMedia, const std::function<void(double share)>& progress);

} // namespace audlmd::command
