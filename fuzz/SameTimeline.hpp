#pragma once

#include "host/mix/Timeline.hpp"

namespace audlmd::fuzz {

/// Whether two timelines play the same under the same names. Notes are not compared; levels of an automation,
/// which are written in decibels, only to within the rounding.
bool areSame(const Timeline& a, const Timeline& b);

} // namespace audlmd::fuzz
