#pragma once

#include "tools/audlmd/render/RenderOptions.hpp"

#include <filesystem>
#include <vector>

namespace audlmd::command {

/// One render, from the options to the last line of the report. `input` is one of the options' inputs;
/// `outputs` are files; none where the render is only explained. Throws CommandError.
void renderOne(const RenderOptions& options, const std::filesystem::path& input,
               const std::vector<std::filesystem::path>& outputs);

} // namespace audlmd::command
