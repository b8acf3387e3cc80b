#pragma once

#include "host/mix/Timeline.hpp"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace audlmd::timeline {

/// A timeline that cannot be read. The text is one line for the user, which names the track and the clip
/// where there are any.
/// \snippet timeline.cpp read
class TimelineError : public std::runtime_error {
public:
    explicit TimelineError(const std::string& line) : std::runtime_error(line), sentence_(line) {}
    TimelineError(const std::string& where, const std::string& sentence)
        : std::runtime_error(where + ": " + sentence), sentence_(sentence) {}

    /// Without track and clip, for a note that has them already.
    const std::string& sentence() const { return sentence_; }

private:
    std::string sentence_;
};

/// The track and the clip that a message is about. Empty names are left out.
struct Where {
    std::string track;
    std::string clip;

    /// "track 'A1', clip 'door'", or "timeline" where both names are empty.
    std::string text() const;
};

/// Names a strip in messages. Tracks and strips are counted from 0; those without a name are shown
/// as #1, #2 and so on.
/// \snippet timeline.cpp report
Where whereIs(const Timeline& timeline, std::size_t track, std::size_t strip);

} // namespace audlmd::timeline
