#pragma once

#include <functional>
#include <string>

namespace audlmd::test {

/// Expects that the SVG pictures that are drawn meanwhile are what tests/tools/plot/pictures/NAME.cairo
/// holds: cairo's script of what is drawn where, in points. A text stands there as a comment and as the area
/// that the text covers. Each byte is 0.6 of its size wide and 0.7 high, so that nothing depends on fonts.
/// With AUDLMD_REDRAW in the environment the script is written anew.
void expectPicture(const std::string& name, const std::function<void()>& draw);

} // namespace audlmd::test
