#pragma once

#include <filesystem>

namespace audlmd::command {

/// Opens a file for reading and writing that nobody else finds, and that is gone with the process. Returns
/// its descriptor, which the caller closes, or -1 with errno.
int makeNamelessFile(const std::filesystem::path& folder);

} // namespace audlmd::command
