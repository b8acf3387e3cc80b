#pragma once

#include "c/Sound.hpp"

#include <nlohmann/json.hpp>

#include <map>
#include <string>

namespace audlmd::c {

/// A timeline that is built by calls: our own JSON, whose strips name sounds of the program.
class BuiltTimeline {
public:
    /// `members` are those of a timeline in our own JSON. Throws TimelineError.
    explicit BuiltTimeline(nlohmann::json members);

    /// `members` are those of a strip. Tracks are made in the order in which they are named. Throws
    /// TimelineError, and then nothing was added.
    void add(const std::string& track, const Sound& sound, nlohmann::json members);

    Timeline timeline() const;
    /// Opens the sounds that timeline() names. Needs no longer than itself what it was made of.
    OpenMedia opener() const;

private:
    Timeline read(const nlohmann::json& root) const;

    nlohmann::json root_;
    /// By the name under which strips know them.
    std::map<std::string, Sound> sounds_;
};

} // namespace audlmd::c

struct audlmd_timeline {
    audlmd::c::BuiltTimeline built;
};
