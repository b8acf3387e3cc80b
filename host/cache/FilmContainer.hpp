#pragma once

#include <filesystem>

namespace audlmd {

/// Whether a file begins like one of the containers that hold pictures beside sound. False for a file that
/// cannot be read.
bool isFilmContainer(const std::filesystem::path& path);

} // namespace audlmd
