#include "c/BuiltTimeline.hpp"

#include "host/timeline/TimelineError.hpp"

#include <algorithm>
#include <utility>

namespace audlmd::c {

using Json = nlohmann::json;

BuiltTimeline::BuiltTimeline(Json members) : root_(std::move(members)) {
    root_["audlmd"] = 1;
    if (root_.contains("tracks"))
        throw timeline::TimelineError("tracks are made by audlmd_timeline_add(), not by the option 'tracks'");
    root_["tracks"] = Json::array();
    timeline();
}

void BuiltTimeline::add(const std::string& track, const Sound& sound, Json members) {
    if (members.contains("media"))
        throw timeline::TimelineError("the sound takes the place of the option 'media'");
    // Of the form of a URL, which no reader takes for a path.
    const std::string name = "sound://" + std::to_string(sounds_.size() + 1);
    members["media"] = name;
    sounds_.emplace(name, sound);
    Json alone = root_;
    alone["tracks"] = {{{"name", track}, {"strips", {members}}}};
    try {
        read(alone);
    } catch (...) {
        sounds_.erase(name);
        throw;
    }
    Json& tracks = root_["tracks"];
    const auto found = std::ranges::find_if(tracks, [&](const Json& one) { return one["name"] == track; });
    Json& place = found != tracks.end()
                      ? *found
                      : tracks.emplace_back(Json{{"name", track}, {"strips", Json::array()}});
    place["strips"].push_back(std::move(members));
}

Timeline BuiltTimeline::timeline() const {
    return read(root_);
}

Timeline BuiltTimeline::read(const Json& root) const {
    const timeline::ReadOptions how{.folder = "/", .timeline = {}, .media = [this](const std::string& name) {
                                        return factsOf(sounds_.at(name));
                                    }};
    return timeline::readTimeline(root.dump(-1, ' ', false, Json::error_handler_t::replace), how);
}

OpenMedia BuiltTimeline::opener() const {
    return [sounds = sounds_](const std::string& name) { return sounds.at(name).media; };
}

} // namespace audlmd::c
