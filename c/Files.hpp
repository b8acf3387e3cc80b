#pragma once

#include "c/Options.hpp"
#include "c/Sound.hpp"

#include <filesystem>

namespace audlmd::c {

/// The options of a mix, which are taken from those of a call.
MixOptions takeMixOptions(Options& options);

/// A sound file, a film or a timeline, see audlmd_open(). Throws std::exception.
Sound openFile(const std::filesystem::path& path, Options options);

} // namespace audlmd::c
