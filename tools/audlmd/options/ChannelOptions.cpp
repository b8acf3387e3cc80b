#include "tools/audlmd/options/ChannelOptions.hpp"

#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <algorithm>
#include <stdexcept>

namespace audlmd::command {
namespace {

constexpr std::size_t mostChannels = 64;

std::vector<std::string> parseMap(std::string_view text, std::string_view option) {
    std::vector<std::string> names;
    while (true) {
        const std::size_t comma = std::min(text.find(','), text.size());
        names.emplace_back(text.substr(0, comma));
        if (comma == text.size())
            break;
        text.remove_prefix(comma + 1);
    }
    if (names.size() > mostChannels)
        throw CommandError(std::string(option) + ": there are at most " + std::to_string(mostChannels) +
                           " channels");
    return names;
}

} // namespace

ChannelLayout parseChannels(std::string_view text, std::string_view option) {
    if (std::optional<ChannelLayout> layout = layoutNamed(text))
        return *layout;
    const std::optional<std::size_t> number = words::wholeIn<std::size_t>(text);
    if (!number || *number < 1 || *number > mostChannels)
        throw CommandError(std::string(option) + ": " + words::quoted(text) + " is not a number from 1 to " +
                           std::to_string(mostChannels) + ", nor one of " + layoutNames());
    return unknownLayout(*number);
}

void ChannelOptions::declare(CLI::App& app, const std::string& group, const std::string& defaultChannels) {
    addParsed(app, "--channels", channels, &parseChannels,
              "How many channels, or a layout such as mono, stereo, 5.1 or 5.1film (default: " +
                  defaultChannels + ")")
        ->option_text("N|LAYOUT")
        ->group(group);
    addParsed(app, "--map", map, &parseMap, "Take these channels, such as 2, 1,1 or L,R")
        ->option_text("LIST")
        ->group(group);
}

std::vector<std::size_t> ChannelOptions::pickedFrom(const ChannelLayout& layout,
                                                    const std::string& input) const {
    const ChannelLayout known = isKnown(layout) ? layout : usualLayout(layout.size());
    const std::vector<std::string> names = channelNames(known);
    std::vector<std::size_t> picked;
    for (const std::string& wanted : *map) {
        const auto named = std::ranges::find(names, wanted);
        const std::optional<std::size_t> number = words::wholeIn<std::size_t>(wanted);
        if (named == names.end() && (!number || *number < 1 || *number > names.size()))
            throw CommandError("--map: " + words::quoted(wanted) + " is not a channel of " +
                               words::quoted(input) + ", which has " +
                               words::counted(names.size(), "channel") + ": " + channelList(known, ", "));
        picked.push_back(named != names.end() ? static_cast<std::size_t>(named - names.begin())
                                              : *number - 1);
    }
    return picked;
}

std::optional<FoldDown> ChannelOptions::foldDownOf(const ChannelLayout& layout,
                                                   const std::string& input) const {
    FoldDown foldDown{.routing = {}, .layout = layout};
    if (map) {
        foldDown.routing = pickedChannels(pickedFrom(layout, input), layout.size());
        foldDown.layout = unknownLayout(map->size());
    }
    // A number says nothing about speakers: so many channels stay what they are.
    if (channels && (isKnown(*channels) || channels->size() != foldDown.layout.size())) {
        try {
            const Routing toChannels = defaultRouting(foldDown.layout, *channels);
            foldDown = {.routing = map ? combined(foldDown.routing, toChannels) : toChannels,
                        .layout = *channels};
        } catch (const std::invalid_argument& error) {
            throw CommandError(words::quoted(input) + ": " + error.what() + "; choose channels with --map");
        }
    }
    return foldDown.routing.rows.empty() ? std::nullopt : std::optional(foldDown);
}

} // namespace audlmd::command
