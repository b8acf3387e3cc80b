#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace audlmd::command {

/// `render` as it was written; times and numbers are read later, when the input is known.
struct RenderOptions {
    std::filesystem::path input;
    /// Empty: nothing is rendered, only explained.
    std::filesystem::path output;
    std::optional<std::string> format;
    std::optional<std::filesystem::path> mixInto;

    bool reverse = false;
    std::optional<std::string> from;
    std::optional<std::string> to;
    std::optional<std::string> duration;

    std::vector<std::string> equaliser;
    std::optional<std::string> fadeIn;
    std::optional<std::string> fadeOut;
    std::optional<std::string> gain;
    std::optional<std::string> level;
    std::optional<std::filesystem::path> automation;
    bool automationReverse = false;
    std::optional<std::string> speed;
    std::optional<std::string> converter;

    /// Samples per render call.
    std::size_t block = 4096;
    /// 0: as many as there are processors.
    std::size_t threads = 0;
    bool explain = false;

    void declare(CLI::App& render);

    /// Throws CommandError for options that cannot stand together, or alone.
    void requireCompatible() const;
};

} // namespace audlmd::command
