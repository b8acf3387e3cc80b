#pragma once

#include "tools/audlmd/plot/Chart.hpp"
#include "tools/audlmd/plot/Pen.hpp"

namespace audlmd::plot {

/// Draws one chart with its title, legend, axes and labels into `area`.
void paintChart(const Pen& pen, const Chart& chart, const Rectangle& area);

} // namespace audlmd::plot
