#pragma once

#include "host/mix/Routing.hpp"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace audlmd::command {

/// What the command line asks of the channels of the output.
struct ChannelOptions {
    /// How many, or which layout: without a name, the speakers are unknown.
    std::optional<ChannelLayout> channels;
    /// The channels to take, by number from 1 on or by name. Empty: all.
    std::optional<std::vector<std::string>> map;

    /// Declares the options in a group of the help. `defaultChannels` says what holds without --channels.
    /// This object must outlive the app.
    void declare(CLI::App& app, const std::string& group, const std::string& defaultChannels);

    /// What becomes of the channels of `input`, a name for messages: those of --map, and then, as --channels
    /// says, a fold-down of them. Nothing where they stay as they are. Throws CommandError for channels that
    /// the input does not have, or that cannot be folded down.
    std::optional<FoldDown> foldDownOf(const ChannelLayout& layout, const std::string& input) const;

private:
    std::vector<std::size_t> pickedFrom(const ChannelLayout& layout, const std::string& input) const;
};

/// Reads a number of channels, or the name of a layout. Throws CommandError, naming `option`.
ChannelLayout parseChannels(std::string_view text, std::string_view option);

} // namespace audlmd::command
