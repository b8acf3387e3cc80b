#include "bench/LiveStrips.hpp"

namespace audlmd::bench {

Timeline plainStrips(const std::string& file, std::size_t count) {
    Timeline timeline;
    timeline.length = stripLength;
    for (std::size_t track = 0; track < count; ++track) {
        TimelineStrip strip;
        strip.media = file;
        strip.length = stripLength;
        strip.gainDb = -30.0;
        strip.settings.from = static_cast<std::int64_t>(track * 48000) % stripLength;
        strip.settings.to = strip.settings.from + stripLength;
        timeline.tracks.push_back({.name = std::to_string(track), .strips = {strip}});
    }
    return timeline;
}

Timeline fullStrips(const std::string& file, std::size_t count) {
    Timeline timeline = plainStrips(file, count);
    for (TimelineTrack& track : timeline.tracks) {
        TimelineStrip& strip = track.strips.front();
        // Together with an automation the gain would need a second level stage.
        strip.gainDb = 0.0;
        strip.settings.equaliser = {{.kind = BandKind::highPass, .frequency = 60.0},
                                    {.kind = BandKind::lowShelf, .frequency = 200.0, .gainDb = 3.0},
                                    {.kind = BandKind::peak, .frequency = 900.0, .gainDb = -6.0},
                                    {.kind = BandKind::peak, .frequency = 3000.0, .gainDb = 4.0},
                                    {.kind = BandKind::highShelf, .frequency = 8000.0, .gainDb = 5.0}};
        strip.settings.fade = {.fadeInSamples = static_cast<std::uint64_t>(stripLength),
                               .fadeInCurve = FadeCurve::power};
        strip.settings.automation =
            AutomationWalk{.automation = Automation({{.position = 0, .uValue = 0.5F},
                                                     {.position = stripLength / 2, .uValue = 0.9F},
                                                     {.position = stripLength, .uValue = 0.4F}})};
    }
    return timeline;
}

} // namespace audlmd::bench
