#pragma once

#include "host/mix/Timeline.hpp"

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace audlmd::command {

/// Which tracks of a timeline are heard.
struct TrackChoice {
    /// Names, or numbers from 1 on. Empty: all.
    std::vector<std::string> only;
    std::vector<std::string> mute;

    /// Declares the options in a group of the help. This object must outlive the app.
    void declare(CLI::App& app, const std::string& group);

    bool isEmpty() const { return only.empty() && mute.empty(); }

    /// Makes all strips of the other tracks silent, and their notes no failures. Returns the names of these
    /// tracks, for messages; those without a name as #1, #2 and so on. Throws CommandError, naming the
    /// nearest one, for a track that is not there.
    std::vector<std::string> applyTo(Timeline& timeline) const;
};

/// "muted: 'music', 'effects'". Empty where nothing is muted.
std::string mutedLine(const std::vector<std::string>& tracks);

} // namespace audlmd::command
