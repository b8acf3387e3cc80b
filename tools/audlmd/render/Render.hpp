#pragma once

#include "tools/audlmd/render/RenderOptions.hpp"

#include <filesystem>

namespace audlmd::command {

/// One render, from the options to the last line of the report. `input` is one of the options' inputs;
/// `output` is a file, or empty where the render is only explained. Throws CommandError.
void renderOne(const RenderOptions& options, const std::filesystem::path& input,
               const std::filesystem::path& output);

} // namespace audlmd::command
