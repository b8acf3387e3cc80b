// `audlmd plot`: the content of a spectrogram, the files of all kinds of pictures, and refusals.

#include "tests/tools/audlmd/CommandFixture.hpp"
#include "tests/tools/plot/Drawing.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/plot/Figures.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace audlmd::test {
namespace {

class Plot : public CommandFixture {};

TEST_F(Plot, ShowsToneAndSilenceWhereTheyAreInASpectrogram) {
    Channels tone{std::vector<float>(48000), sine(6000.0, 0.5)[0]};
    std::fill_n(tone[1].begin(), 24000, 0.0F);
    writeSound(in("tone.wav"), tone);
    const plot::Figure figure = command::spectrogramFigure(in("tone.wav"), 2, -120.0, [](auto...) {});
    const plot::HeatMap& map = figure.charts.at(0).heatMap.value();
    const auto level = [&](double time, double kilohertz) {
        const auto column = static_cast<std::size_t>(time * static_cast<double>(map.columns));
        const auto row = static_cast<std::size_t>(kilohertz / 24.0 * static_cast<double>(map.rows));
        return map.values[column * map.rows + row];
    };
    EXPECT_NEAR(level(0.75, 6.01), -6.02, 0.2);
    EXPECT_LT(level(0.75, 7.0), -115.0F);
    EXPECT_LT(level(0.25, 6.01), -115.0F);
}

TEST_F(Plot, DrawsEveryKindAsItsPictureShows) {
    writeBytes(in("ride.csv"), "0,-20\n2,0\n3,-inf\n");
    for (const auto& [kind, options] : std::map<std::string, std::string>{
             {"curves", ""},
             {"envelope", " --fade-in 1s:power --fade-out 2:log --duration 5s --gain -3"},
             {"automation", " --automation-reverse " + in("ride.csv").string()},
             {"eq", " peak:1k:+3:0.7 highpass:30 --rate 44100"}})
        expectPicture(kind, [&] {
            CLI::App app;
            command::addPlotCommand(app);
            app.parse("plot " + kind + options + " -o " + in("a.svg").string());
        });
    writeSound(in("a.wav"), noise(2, 4800));
    for (const auto& [picture, start] : {std::pair{"a.png", "\x89PNG"}, {"a.svg", "<?xml"}}) {
        output(std::string("plot spectrogram a.wav --channel 2 -o ") + picture);
        EXPECT_TRUE(readBytes(in(picture)).starts_with(start)) << picture;
    }
}

TEST_F(Plot, RefusesInOneLineAndLeavesThePictureThatWasThere) {
    writeBytes(in("a.png"), "before");
    writeBytes(in("ride.csv"), "0,-20\n2\n");
    writeSound(in("a.wav"), noise(1, 100));
    expectRefused("plot curves", "--output is required (audlmd plot curves --help tells more)");
    expectRefused("plot curves -o a.gif", "use .png or .svg");
    expectRefused("plot curves -o nowhere/a.png", "nowhere/a.png");
    expectRefused("plot curves -o a.png", "cannot write 'a.png'", {.fileSizeLimit = 100});
    expectRefused("plot envelope -o a.png --fade-in 3s --duration 2s", "fade-in");
    expectRefused("plot envelope -o a.png --duration 0", "--duration");
    expectRefused("plot automation ride.csv -o a.png", "ride.csv line 2");
    expectRefused("plot eq peak:1k:3:-1 -o a.png", "Q");
    expectRefused("plot spectrogram ride.csv -o a.png", "ride.csv");
    expectRefused("plot spectrogram a.wav --channel 2 -o a.png", "--channel 2");
    expectRefused("plot spectrogram a.wav --floor nan -o a.png", "'nan' is not a number");
}

} // namespace
} // namespace audlmd::test
