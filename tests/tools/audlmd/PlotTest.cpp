// `audlmd plot`: what is drawn, the files of both kinds, and refusals.

#include "tests/tools/audlmd/CommandFixture.hpp"
#include "tests/tools/plot/Drawing.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/plot/Figures.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>

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
    const plot::Figure figure = command::spectrogramFigure(in("a.wav"), 2, -120.0, [](auto...) {});
    EXPECT_EQ(figure.subtitle, "Channel 2 of 2, 48000 Hz");
    EXPECT_GT(std::ranges::max(figure.charts.at(0).heatMap.value().values), -40.0F);
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
    expectRefused("plot curves -o nowhere/a.png", "nowhere/a.png", 5);
    expectRefused("plot envelope -o a.png --fade-in 3s --duration 2s", "fade-in");
    expectRefused("plot envelope -o a.png --duration 0", "--duration");
    expectRefused("plot automation ride.csv -o a.png", "'ride.csv' line 2", 3);
    expectRefused("plot eq peak:1k:3:-1 -o a.png", "Q");
    expectRefused("plot spectrogram ride.csv -o a.png", "ride.csv", 3);
    expectRefused("plot spectrogram a.wav --channel 2 -o a.png", "--channel 2");
    expectRefused("plot spectrogram a.wav --floor nan -o a.png", "'nan' is not a number");
}

} // namespace
} // namespace audlmd::test
