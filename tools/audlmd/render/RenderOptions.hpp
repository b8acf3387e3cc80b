#pragma once

#include "tools/audlmd/files/OutputFormat.hpp"
#include "tools/audlmd/options/StripOptions.hpp"

#include <cstddef>
#include <filesystem>
#include <optional>

namespace CLI {
class App;
}

namespace audlmd::command {

/// The options of `render`.
struct RenderOptions {
    std::filesystem::path input;
    /// Empty: nothing is rendered, only explained.
    std::filesystem::path output;
    std::optional<FormatId> format;
    std::optional<std::filesystem::path> mixInto;
    StripOptions strip;
    /// Of the output, in samples per second. Not set: the input's.
    std::optional<int> rate;

    /// Samples per render call.
    std::size_t block = 4096;
    /// At most so many channels are rendered side by side. 0: as many as there are processors.
    std::size_t threads = 0;
    bool explain = false;
    /// Whether the functions of the loaded library render, and not those compiled into the command.
    bool throughTables = false;

    /// Declares all options with their help. This object must outlive the app.
    void declare(CLI::App& render);

    /// Throws CommandError for options that cannot stand together, or alone.
    void requireCompatible() const;
};

} // namespace audlmd::command
