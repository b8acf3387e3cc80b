#include "bench/sound/Page.hpp"
#include "ole/Orv/Exception.hpp"
#include "tools/plot/Figure.hpp"
#include "tools/plot/Spectrogram.hpp"

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>

namespace {

using namespace audlmd;
namespace fs = std::filesystem;

constexpr const char* tableBegin = "<!-- measured: written by scripts/sound -->\n";
constexpr const char* tableEnd = "<!-- end of measured -->\n";

std::string read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("cannot read " + path.string());
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary);
    if (!file.write(content.data(), std::ssize(content)).flush())
        throw std::runtime_error("cannot write " + path.string());
    std::printf("wrote %s\n", path.c_str());
}

/// Replaces the text between the two marks of the page by the table.
void updatePage(const fs::path& path, const std::string& table) {
    std::string page = read(path);
    const std::size_t begin = page.find(tableBegin);
    const std::size_t end = page.find(tableEnd);
    if (begin == std::string::npos || end == std::string::npos || end < begin)
        throw std::runtime_error(path.string() + " has lost the marks around its table");
    const std::size_t from = begin + std::string(tableBegin).size();
    page.replace(from, end - from, table);
    write(path, page);
}

/// A sine at half of full scale. The frequency rises evenly from 0 Hz to half the sample rate in six seconds.
std::vector<float> sweep() {
    constexpr double seconds = 6.0;
    std::vector<float> samples(static_cast<std::size_t>(seconds * sound::sampleRate));
    const auto length = static_cast<double>(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double time = static_cast<double>(i) / length;
        samples[i] = static_cast<float>(0.5 * std::sin(0.5 * std::numbers::pi * length * time * time));
    }
    return samples;
}

plot::Chart sweepChart(const sound::Conversion& conversion) {
    const std::vector<float> samples = sound::convert(sweep(), conversion).samples;
    // About one cell per pixel: more cells would only make the files larger.
    plot::Spectrogram spectrogram(std::ssize(samples), static_cast<int>(sound::sampleRate), 332, 267);
    spectrogram.add(samples);
    plot::Chart chart = spectrogram.chart(-120.0);
    chart.title = sound::nameOf(conversion.converter);
    return chart;
}

void drawSweeps(const fs::path& folder, double speed, bool reverse) {
    char name[64];
    std::snprintf(name, sizeof name, "sweep-%g%s.png", speed, reverse ? "-backwards" : "");
    char title[128];
    std::snprintf(title, sizeof title, "A sweep from 0 to 24 kHz, played %s at speed %g",
                  reverse ? "backwards" : "forwards", speed);
    plot::Figure figure;
    figure.title = title;
    figure.columns = 2;
    figure.chartWidth = 434.0;
    figure.chartHeight = 295.0;
    figure.pixelsPerPoint = 1.25;
    for (const Converter converter : {Converter::linear, Converter::filtering, Converter::best})
        figure.charts.push_back(sweepChart({converter, speed, reverse}));
    write(folder / name, drawFigure(figure, plot::PictureKind::png));
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): options that clash are a fault of this program
int main(int argc, char** argv) {
    CLI::App app("Measures the sound of the two converters, and writes the figures into a page.",
                 "audlmd-sound");
    fs::path page;
    fs::path pictures;
    app.add_option("PAGE", page, "The table between the two marks is replaced")->required();
    app.add_option("PICTURES", pictures, "The folder for the spectrograms")->required();
    CLI11_PARSE(app, argc, argv);
    try {
        updatePage(page, sound::measuredTable());
        for (const double speed : sound::measuredSpeeds)
            drawSweeps(pictures, speed, false);
        drawSweeps(pictures, 1.5, true);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "audlmd-sound: %s\n", error.what());
        return 1;
    } catch (const Orv::Exception::Base& error) {
        std::fprintf(stderr, "audlmd-sound: %s\n", error.message());
        return 1;
    }
}
