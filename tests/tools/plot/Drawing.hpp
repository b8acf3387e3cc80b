#pragma once

#include "tools/plot/Pen.hpp"

#include <functional>
#include <string>

namespace audlmd::test {

/// Expects that what is drawn is what tests/tools/plot/pictures/NAME.txt lists, a line for each mark:
///
///     text COLOUR SIZE X,Y TEXT      from the left end of the baseline on
///     line COLOUR WIDTH X,Y ...      with a minus sign for dashes; `/` begins a line that stands apart
///     fill COLOUR X,Y ...
///     image X,Y X,Y PIXELS           row by row, of small images
///
/// Places are in units of the surface, sizes and widths in points. An opacity below 1 follows the colour. Of
/// many corners some are listed, behind their number. A path that leaves the clip ends in "in" and two
/// corners of the clip. Characters are 0.6 of their size wide and 0.7 high, so that nothing depends on fonts.
/// With AUDLMD_REDRAW in the environment the list is written anew.
void expectPicture(const std::string& name, const std::function<void(const plot::Pen&)>& paint);

} // namespace audlmd::test
