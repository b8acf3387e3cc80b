// `audlmd plot`: what is drawn, the files of both kinds, and refusals.

#include "tests/tools/audlmd/CommandFixture.hpp"
#include "tests/tools/plot/Drawing.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/plot/Figures.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <tuple>

namespace audlmd::test {
namespace {

class Plot : public CommandFixture {};

TEST_F(Plot, DrawsEveryKindAsItsPictureShows) {
    writeBytes(in("ride.csv"), "0,-20\n2,0\n3,-inf\n");
    for (const auto& row : std::map<std::string, std::string>{
             {"curves", ""},
             {"envelope", " --fade-in 1s:power --fade-out 2:log --duration 5s --gain -3"},
             {"automation", " --automation-reverse " + in("ride.csv").string()},
             {"eq", " peak:1k:+3:0.7 highpass:30 --rate 44100"}})
        expectPicture(row.first, [&] {
            CLI::App app;
            command::addPlotCommand(app);
            app.parse("plot " + row.first + row.second + " -o " + in("a.svg").string());
        });
    writeSound(in("a.wav"), {std::vector<float>(4800), noise(1, 4800)[0]});
    const command::Watcher unwatched = [](auto...) {};
    const plot::Figure figure = command::spectrogramFigure(in("a.wav"), 2, -120.0, unwatched);
    EXPECT_EQ(figure.subtitle, "Channel 2 of 2, 48000 Hz");
    EXPECT_GT(std::ranges::max(figure.charts.at(0).heatMap.value().values), -40.0F);
    const plot::Figure both = command::spectrogramFigure(in("a.wav"), std::nullopt, -120.0, unwatched);
    EXPECT_EQ(both.charts.at(1).heatMap->values, figure.charts[0].heatMap->values);
    EXPECT_EQ(both.charts[1].title, "R");
    const plot::Figure waves = command::waveformFigure(in("a.wav"), std::nullopt, unwatched);
    EXPECT_EQ(std::ranges::max(waves.charts.at(0).series.at(0).points, {}, &plot::Point::y).y, 0.0);
    EXPECT_GT(std::ranges::max(waves.charts.at(1).series.at(0).points, {}, &plot::Point::y).y, 0.9);
    // A second of silence, then a tone that fills the windows from one end to the other.
    Channels tone{std::vector<float>(48000)};
    for (int second = 0; second < 3; ++second)
        std::ranges::copy(sine(1000.0, 0.1)[0], std::back_inserter(tone[0]));
    writeSound(in("tone.wav"), tone);
    const plot::Chart loudness = command::loudnessFigure(in("tone.wav"), unwatched).charts.at(0);
    const std::vector<plot::Point>& momentary = loudness.series.at(0).points;
    EXPECT_EQ(std::tuple(momentary.size(), momentary[0].x, momentary.back().x), std::tuple(37U, 0.4, 4.0));
    EXPECT_TRUE(std::isinf(momentary[6].y));
    EXPECT_NEAR(momentary[7].y, -29.0, 0.3);
    EXPECT_NEAR(momentary[10].y, -23.0, 0.1);
    EXPECT_EQ(loudness.series.at(1).points.size(), 11U);
    EXPECT_NEAR(loudness.series[1].points.back().y, -23.0, 0.1);
    EXPECT_TRUE(loudness.series.at(2).name.starts_with("Integrated: -23."));
    for (const std::string kind : {"spectrogram a.wav --channel 2", "waveform a.wav", "loudness tone.wav"})
        for (const auto& [picture, start] : {std::pair{"a.png", "\x89PNG"}, {"a.svg", "<?xml"}}) {
            output("plot " + kind + " -o " + picture);
            EXPECT_TRUE(readBytes(in(picture)).starts_with(start)) << kind << picture;
        }
}

TEST_F(Plot, RefusesInOneLineAndLeavesThePictureThatWasThere) {
    writeBytes(in("a.png"), "before");
    writeBytes(in("ride.csv"), "0,-20\n2\n");
    writeSound(in("a.wav"), noise(1, 100));
    expectRefused("plot curves", "--output is required (audlmd plot curves --help tells more)");
    expectRefused("plot curves -o a.gif", "use .png or .svg");
    expectRefused("plot curves -o nowhere/a.png", "nowhere/a.png", 5);
    expectRefused("plot envelope -o a.png --fade-in 3s --duration 2s", "fade-in");
    expectRefused("plot envelope -o a.png --duration 0", "--duration");
    expectRefused("plot automation ride.csv -o a.png", "'ride.csv' line 2", 3);
    expectRefused("plot eq peak:1k:3:-1 -o a.png", "Q");
    expectRefused("plot spectrogram ride.csv -o a.png", "ride.csv", 3);
    expectRefused("plot spectrogram a.wav --channel 2 -o a.png", "--channel 2");
    expectRefused("plot loudness a.wav -o a.png", "'a.wav' is shorter than 0.4 s", 3);
    writeSound(in("many.wav"), noise(65, 10));
    expectRefused("plot waveform many.wav -o a.png", "take one with --channel N");
    expectRefused("plot loudness many.wav -o a.png", "'many.wav' has no loudness: it is measured of 1 to 64",
                  3);
    expectRefused("plot spectrogram a.wav --floor nan -o a.png", "'nan' is not a number");
}

} // namespace
} // namespace audlmd::test
