#include "tests/host/timeline/TimelineFixture.hpp"

namespace audlmd::test {

Json time(double value, double rate) {
    return {{"OTIO_SCHEMA", "RationalTime.1"}, {"rate", rate}, {"value", value}};
}

Json range(double start, double duration, double rate) {
    return {{"OTIO_SCHEMA", "TimeRange.1"},
            {"start_time", time(start, rate)},
            {"duration", time(duration, rate)}};
}

Json clip(const std::string& name, double start, double duration, const Json& more) {
    const Json file{{"OTIO_SCHEMA", "ExternalReference.1"},
                    {"target_url", "/a.wav"},
                    {"available_range", range(0, 1000)}};
    Json value{{"OTIO_SCHEMA", "Clip.2"},
               {"name", name},
               {"source_range", range(start, duration)},
               {"media_references", {{"DEFAULT_MEDIA", file}}}};
    value.update(more);
    return value;
}

Json gap(double duration) {
    return {{"OTIO_SCHEMA", "Gap.1"}, {"source_range", range(0, duration)}};
}

Json transition(double in, double out, const std::string& curve) {
    return {{"OTIO_SCHEMA", "Transition.1"},
            {"in_offset", time(in)},
            {"out_offset", time(out)},
            {"metadata", {{"any", {{"curve", curve}}}}}};
}

Json warp(double scalar) {
    return {{"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"time_scalar", scalar}};
}

Json composition(const std::string& schema, const std::vector<Json>& children, const Json& more) {
    Json value{{"OTIO_SCHEMA", schema}, {"children", children}};
    value.update(more);
    return value;
}

Json track(const std::vector<Json>& children, const Json& more) {
    Json value = composition("Track.1", children, {{"name", "A1"}, {"kind", "Audio"}});
    value.update(more);
    return value;
}

Json timeline(const std::vector<Json>& tracks, const Json& more) {
    Json value{{"OTIO_SCHEMA", "Timeline.1"}, {"tracks", composition("Stack.1", tracks)}};
    value.update(more);
    return value;
}

ReadOptions options() {
    ReadOptions how;
    how.folder = "/media";
    return how;
}

std::vector<TimelineStrip> stripsOf(const std::vector<Json>& children, const Json& moreOfTrack) {
    return readOtio(timeline({track(children, moreOfTrack)}), options()).tracks.at(0).strips;
}

std::string refusal(const std::string& text, const ReadOptions& how) {
    try {
        readTimeline(text, how);
        return {};
    } catch (const TimelineError& error) {
        return error.what();
    }
}

} // namespace audlmd::test
