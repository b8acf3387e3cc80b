#include "tests/tools/plot/Drawing.hpp"
#include "tools/plot/Figure.hpp"
#include "tools/plot/Palette.hpp"
#include "tools/plot/Spectrogram.hpp"
#include "tools/plot/Waveform.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <stdexcept>
#include <tuple>

namespace audlmd::test {
namespace {

using namespace plot;

// Made while compiling, where nothing behind the colours can be read.
static_assert(heatColour(1.0).green == 1.0 && heatColour(2.0).green == 1.0 && heatColour(NAN).red == 0.0);

TEST(Chart, IsDrawnAsItsPictureShows) {
    Chart chart;
    chart.title = "Title";
    chart.x = {"Frequency (Hz)", 20.0, 2000.0, Scale::logarithmic};
    chart.y = {"Gain (dB)", -12.0, 6.0, Scale::decibels};
    chart.series.resize(4);
    // Straight, but for a step, and out of the chart at the end.
    chart.series[0].name = "line";
    for (int n = 0; n <= 1000; ++n)
        chart.series[0].points.push_back({20.0 * std::pow(100.0, n / 1000.0), n < 500   ? -6.0
                                                                              : n < 800 ? 3.0
                                                                                        : -INFINITY});
    chart.series[1] = {"dashes", Palette::green, 1.5, true, false, false, {{20.0, -3.0}, {2000.0, 3.0}}};
    chart.series[2] = {"a name that takes a row", Palette::blue, 4.0, false, true, false, {{200.0, 0.0}}};
    Chart heat;
    heat.x = timeAxis(2.0);
    // From foot to head, one column after the other.
    heat.heatMap = HeatMap{2, 3, {-40.0F, 5.0F, -35.0F, NAN, -20.0F, -1.0F}, {"dB", -40.0, 0.0}};
    Figure figure;
    figure.title = "\xFFT\x7F\xE0\xA4\x95 \xED\xA0\x80 \xEF\xBF\xBE \xC1\xBF \xF0\x9F\x8E\xB5 \xE2\x82";
    figure.subtitle = "what it was made from" + std::string(100, 'x');
    figure.charts = {chart, heat, {}};
    figure.columns = 2;
    figure.chartWidth = 460.0;
    figure.chartHeight = 280.0;
    expectPicture("charts", [&] { drawFigure(figure, PictureKind::svg); });
    // The picture's width and height.
    EXPECT_EQ(drawFigure(figure, PictureKind::png).substr(16, 8), std::string("\0\0\x07\x30\0\0\x04\xD8", 8));
    // Even a small chart has some ticks, and no labels that touch.
    chart.series.resize(1);
    Figure small;
    small.charts = {chart};
    small.chartWidth = 200.0;
    small.chartHeight = 110.0;
    expectPicture("small", [&] { drawFigure(small, PictureKind::svg); });
    figure.chartHeight = 9000.0;
    EXPECT_THROW(drawFigure(figure, PictureKind::png), std::runtime_error);
}

TEST(Waveform, ShowsPeaksAndRmsInRows) {
    // Columns of 32 samples: a wave, silence, one at full scale, one that goes beyond and has no number in
    // it.
    std::vector<float> signal(128, 0.5F);
    for (std::size_t n = 0; n < 32; n += 2)
        signal[n] = -0.25F;
    std::fill_n(signal.begin() + 32, 32, 0.0F);
    signal[70] = -1.0F;
    signal[100] = 1.5F;
    signal[101] = NAN;
    Figure figure;
    for (const std::size_t columns : {4U, 64U}) {
        Waveform waveform(128, 32, 1.0, columns);
        waveform.add(std::span(signal).first(33));
        waveform.add(std::span(signal).subspan(33));
        EXPECT_EQ(waveform.peak(), 1.5);
        figure.charts.push_back(waveform.chart(2.0));
    }
    figure.charts[0].title = "LFE";
    // Two samples have no RMS. They end where they begin: an outline from left to right and back.
    EXPECT_EQ(figure.charts[1].series.size(), 2U);
    EXPECT_EQ(figure.charts[1].series[0].points.size(), 128U);
    figure.charts[1] = figure.charts[0];
    figure.charts[1].title = "R";
    figure.rows = true;
    figure.chartHeight = 100.0;
    expectPicture("rows", [&] { drawFigure(figure, PictureKind::svg); });
}

TEST(Spectrogram, HoldsTheMeanOfAColumnAndTheLargestOfARow) {
    // A tone in the 24th of 64 bins, of which 16 are a row. It begins and ends in the middle of a part.
    std::vector<float> signal(3072);
    for (std::size_t n = signal.size() / 2; n < signal.size(); ++n)
        signal[n] = 0.5F * static_cast<float>(std::sin(0.375 * std::numbers::pi * static_cast<double>(n)));
    Spectrogram spectrogram(3072, 3072, 8, 4);
    for (std::size_t n = 0; n < signal.size(); n += 96)
        spectrogram.add(std::span(signal).subspan(n, 96));
    const Chart chart = spectrogram.chart(-99.0);
    ASSERT_EQ(chart.heatMap.value().values.size(), 32U);
    for (std::size_t column = 0; column < 8; ++column)
        for (std::size_t row = 0; row < 4; ++row) {
            const float share = column == 4 ? 5.25F / 6.0F : column == 7 ? 6.25F / 7.0F : 1.0F;
            const float level = chart.heatMap->values[4 * column + row];
            if (column >= 4 && row == 1)
                EXPECT_NEAR(level, 10.0F * std::log10(0.25F * share), 0.01) << column;
            else
                EXPECT_LT(level, column == 4 || column == 7 ? -30.0F : -120.0F) << column << ", " << row;
        }
    EXPECT_EQ(std::tuple(chart.x.to, chart.y.to, chart.heatMap->scale.from), std::tuple(1.0, 1.536, -99.0));
    // Of no samples as of one.
    EXPECT_EQ(Spectrogram(0, 3072, 8, 4).chart(-99.0).x.to, 1.0 / 3072.0);
}

} // namespace
} // namespace audlmd::test
