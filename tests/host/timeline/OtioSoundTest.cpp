#include "host/signal/GainLaws.hpp"
#include "tests/host/timeline/TimelineFixture.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

namespace audlmd::test {
namespace {

Json exported(const std::vector<Json>& parameters, bool enabled = true) {
    return {{"OTIO_SCHEMA", "Effect.1"},
            {"metadata", {{"any", {{"Enabled", enabled}, {"Parameters", parameters}}}}}};
}

Json parameter(const std::string& name, const Json& value, const Json& keys = Json::object()) {
    return {{"Parameter ID", name}, {"Parameter Value", value}, {"Key Frames", keys}};
}

double decibelsAt(const TimelineStrip& strip, std::int64_t position) {
    const float u = strip.settings.automation.value().automation.uValueAt(position);
    return decibelsOfGain(mixerStyleGain(static_cast<double>(u)));
}

TEST(OtioSound, ReadsVolumeAndFadersOfExporters) {
    const Json loud = exported({parameter("volume", -6.5), parameter("faderIn", 5), parameter("faderOut", 7),
                                parameter("tilt", 30)});
    const Json off = exported({parameter("volume", -40)}, false);
    const Timeline read = readOtio(
        timeline({track({clip("a", 0, 20, {{"effects", {warp(2), loud, off, exported({})}}})})}), options());
    const TimelineStrip& strip = read.tracks[0].strips.at(0);
    EXPECT_DOUBLE_EQ(strip.gainDb, -6.5);
    EXPECT_EQ(strip.settings.fade.fadeInSamples, 10U * frame);
    EXPECT_EQ(strip.settings.fade.fadeOutSamples, 14U * frame);
    EXPECT_EQ(strip.settings.fade.fadeInCurve, FadeCurve::linear);
    ASSERT_EQ(read.notes.size(), 1U);
    EXPECT_NE(read.notes[0].text.find("tilt"), std::string::npos);
    const Json silent{{"effects", {exported({parameter("volume", -100)})}}};
    EXPECT_TRUE(std::isinf(stripsOf({clip("a", 0, 20, silent)}).at(0).gainDb));
}

TEST(OtioSound, ReadsPanAndBandsOfExporters) {
    const auto band = [](int index, std::vector<Json> parameters, bool enabled = true) {
        Json number = parameter("eq band index", index);
        number["Default Parameter Value"] = index;
        parameters.push_back(number);
        return exported(parameters, enabled);
    };
    const auto effects = [&](bool isOn) {
        Json master = exported({}, isOn);
        master["metadata"]["any"]["Type"] = 64;
        return std::vector<Json>{exported({parameter("pan", -50)}),
                                 band(2, {parameter("eq dB gain", 79), parameter("eq qFactor", 750)}),
                                 band(3, {parameter("eq dB gain", -240), parameter("eq frequency", 1000)}),
                                 band(1, {}),
                                 band(4, {parameter("eq dB gain", 30)}, false),
                                 band(0, {parameter("eq frequency", 80)}),
                                 band(5, {parameter("eq dB gain", -10)}),
                                 master};
    };
    const auto read = [&](bool isOn) {
        return readOtio(timeline({track({clip("a", 0, 20, {{"effects", effects(isOn)}})})}), options());
    };
    const Timeline whole = read(true);
    const TimelineStrip& strip = whole.tracks[0].strips.at(0);
    EXPECT_EQ(strip.pan, -50.0);
    std::vector<std::array<double, 3>> bands;
    for (const EqualiserBand& played : strip.settings.equaliser) {
        EXPECT_EQ(played.kind, BandKind::peak);
        bands.push_back({played.frequency, played.gainDb, played.q});
    }
    EXPECT_EQ(bands, (std::vector<std::array<double, 3>>{{239, 7.9, 0.75}, {1000, -24, 1}, {19000, -1, 1}}));
    ASSERT_EQ(whole.notes.size(), 2U);
    EXPECT_EQ(whole.notes[0].text,
              "band 0 of the exporter's equaliser is not played, because its shape is not in the file");
    EXPECT_EQ(whole.notes[1].text,
              "band 5 of the exporter's equaliser is played as a peak, because its shape is not in the file");
    EXPECT_TRUE(read(false).tracks[0].strips.at(0).settings.equaliser.empty());
    EXPECT_TRUE(read(false).notes.empty());
    const Json nameless{{"effects", {band(-1, {parameter("eq dB gain", 30)})}}};
    const Timeline unknown = readOtio(timeline({track({clip("a", 0, 20, nameless)})}), options());
    EXPECT_TRUE(unknown.tracks[0].strips.at(0).settings.equaliser.empty());
    EXPECT_EQ(unknown.notes.at(0).text, "a band of the exporter's equaliser has no number and is not played");
    const Json mistyped{{"effects", {exported({parameter("pan", 101)})}}};
    EXPECT_EQ(stripsOf({clip("a", 0, 20, mistyped)}).at(0).silence,
              "\"pan\" is not a number from -100 to 100");
}

TEST(OtioSound, NotesParametersThatChangeSomethingOnce) {
    const auto other = [](const std::string& name, const Json& value) {
        return Json{{"DisplayName", name}, {"StartValue", {{"Value", value}}}};
    };
    Json usual = parameter("gain", 1.0);
    usual["Default Parameter Value"] = 1;
    const std::vector<Json> effects{
        exported({usual, {{"DisplayName", "Bypass"}, {"Keyframes", Json::array()}}}),
        exported({parameter("enabled", false), parameter("frequency", 500)}),
        exported({other("Bypass", true), other("Level", 3)}),
        exported({other(" ", 1), other("Level", 3), other("Level", 4), parameter("x", nullptr)})};
    const Timeline read =
        readOtio(timeline({track({gap(1), clip("a", 0, 20, {{"effects", effects}})})}), options());
    ASSERT_EQ(read.notes.size(), 2U);
    EXPECT_EQ(read.notes[0].text, "the parameter '?' of the effect '?' is not played");
    EXPECT_EQ(read.notes[1].text, "the parameter 'Level' of the effect '?' is not played (2 times)");
    EXPECT_EQ(read.notes[1].at, frame);
}

TEST(OtioSound, FollowsKeyFramesFromTheStartOfTheClip) {
    const Json keys{{"2", {{"Value", 16}}}, {"+10", {{"Value", -24}}}, {"0", {{"Value", -24}}}};
    const Json more{{"effects", {warp(2), exported({parameter("volume", 3, keys)})}}};
    const TimelineStrip strip = stripsOf({gap(9), transition(1, 0), clip("a", 50, 20, more)}).at(0);
    // 6 dB are above what an automation reaches. The transition begins one frame before the clip.
    EXPECT_DOUBLE_EQ(strip.gainDb, 6.0);
    EXPECT_NEAR(decibelsAt(strip, 2 * frame), -30.0, 0.01);
    EXPECT_NEAR(decibelsAt(strip, 4 * frame), -10.0, 0.1);
    EXPECT_NEAR(decibelsAt(strip, 6 * frame), 10.0, 0.01);
    EXPECT_NEAR(decibelsAt(strip, 14 * frame), -10.0, 0.1);
    EXPECT_NEAR(decibelsAt(strip, 40 * frame), -30.0, 0.01);

    const Json stack = composition("Stack.1", {clip("a", 50, 20, more)}, {{"effects", {warp(-1)}}});
    const TimelineStrip mirrored = stripsOf({stack}).at(0);
    EXPECT_NEAR(decibelsAt(mirrored, 36 * frame), 10.0, 0.01);
    EXPECT_NEAR(decibelsAt(mirrored, 28 * frame), -10.0, 0.1);
}

TEST(OtioSound, FitsFadesThatRoundingMakesTooLongAndNotesWhatATransitionReplaces) {
    const auto faded = [](double in, double out) {
        return Json{{"metadata", {{"audlmd", {{"fadeIn", in}, {"fadeOut", out}}}}}};
    };
    // 960.6 samples each, of a clip of 1920.
    const double half = 960.6 / 48'000.0;
    Timeline read = readOtio(timeline({track({clip("a", 0, 1, faded(half, half))})}), options());
    EXPECT_EQ(read.tracks[0].strips.at(0).settings.fade.fadeInSamples, 961U);
    EXPECT_EQ(read.tracks[0].strips.at(0).settings.fade.fadeOutSamples, 959U);
    EXPECT_TRUE(read.notes.empty());
    const FadePlan uneven =
        stripsOf({clip("a", 0, 1, faded(1000.0 / 48'000.0, 922.0 / 48'000.0))}).at(0).settings.fade;
    EXPECT_EQ(uneven.fadeInSamples, 998U);
    EXPECT_EQ(uneven.fadeOutSamples, 922U);
    const Json before = clip("a", 50, 20, faded(half, 0));
    const Json after = clip("a", 50, 20, {{"metadata", {{"audlmd", {{"fadeOut", half}}}}}});
    for (const std::vector<Json>& children :
         {std::vector{gap(9), transition(1, 0), before}, std::vector{after, transition(1, 0), gap(9)}}) {
        read = readOtio(timeline({track(children)}), options());
        ASSERT_EQ(read.notes.size(), 1U);
        EXPECT_EQ(read.notes[0].text, "a transition takes the place of the clip's own fade");
    }
}

TEST(OtioSound, ReadsOurOwnBlock) {
    const Json block = Json::parse(R"({"gain": -2, "level": 1.5, "fadeIn": 0.5, "fadeOut": 0.25,
        "fadeInCurve": "log", "converter": "linear", "automation": [[0, 0], [0.5, "-inf"]],
        "equaliser": ["lowpass:1.5k", {"kind": "peak", "frequency": 500, "gain": 3, "q": 2}],
        "routing": [[1, 0], [0.5, -0.5]], "pan": 25, "relabel": "24000/1001:24"})");
    const Json more{{"effects", {warp(1.5)}}, {"metadata", {{"audlmd", block}}}};
    const TimelineStrip strip = stripsOf({clip("a", 0, 50, more)}).at(0);
    EXPECT_DOUBLE_EQ(strip.gainDb, -0.5);
    EXPECT_EQ(strip.settings.fade.fadeInSamples, 36'000U);
    EXPECT_EQ(strip.settings.fade.fadeOutSamples, 18'000U);
    EXPECT_EQ(strip.settings.fade.fadeInCurve, FadeCurve::log);
    EXPECT_EQ(strip.settings.converter, Converter::linear);
    EXPECT_NEAR(decibelsAt(strip, 18'000), -50.0, 0.1);
    EXPECT_TRUE(std::isinf(decibelsAt(strip, 36'000)));
    ASSERT_EQ(strip.settings.equaliser.size(), 2U);
    EXPECT_EQ(strip.settings.equaliser[0].kind, BandKind::lowPass);
    EXPECT_DOUBLE_EQ(strip.settings.equaliser[0].frequency, 1500.0);
    EXPECT_DOUBLE_EQ(strip.settings.equaliser[1].q, 2.0);
    EXPECT_EQ(strip.routing.value().rows[1], (std::vector<float>{0.5F, -0.5F}));
    EXPECT_EQ(strip.pan, 25.0);
    EXPECT_EQ(strip.relabel, (Relabel{1000, 1001}));
}

} // namespace
} // namespace audlmd::test
