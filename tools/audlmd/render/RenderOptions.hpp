#pragma once

#include "tools/audlmd/options/LevelOptions.hpp"
#include "tools/audlmd/options/OutputOptions.hpp"
#include "tools/audlmd/options/PeaksOptions.hpp"
#include "tools/audlmd/options/StripOptions.hpp"
#include "tools/audlmd/render/RenderedChannel.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {

/// The options of `render`. Without an output the render is only explained.
struct RenderOptions : OutputOptions {
    /// Several go into a folder, each as one render.
    std::vector<std::filesystem::path> inputs;
    /// Of the name of each output in a folder.
    std::string suffix;
    std::optional<std::filesystem::path> mixInto;
    StripOptions strip;
    LevelOptions levels;
    PeaksOptions peaks;
    bool explain = false;
    bool noMetadata = false;
    /// A CSV file. Empty: none.
    std::filesystem::path markers;

    /// Declares all options with their help. This object must outlive the app.
    void declare(CLI::App& render);

    /// Throws CommandError for options that cannot stand together, or alone.
    void requireCompatible() const;

    /// Whether the output is a folder: one that is there, or one that is to be made, whose name ends with a
    /// slash.
    bool isFolder() const;

    RenderedChannel::Through through() const;
};

} // namespace audlmd::command
