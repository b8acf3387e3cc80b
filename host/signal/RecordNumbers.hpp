#pragma once

#include "loop_modes/IteratorCreationParams.hpp"

#include <span>
#include <string>
#include <vector>

namespace audlmd {

/// A field of the record of a render call, in words: the name, and the value with an explanation.
struct RecordNumber {
    std::string name;
    std::string value;
};

/// The fields that the render function of a mode reads in a record, in the order of the chain, source first.
/// Fields that the mode does not read may be unset. The code must be valid.
///
/// An equaliser does not give its coefficients back. Pass the sections that were set, see sectionOf(). Use
/// this to show a user or a bug report what a call was made with. Levels are given as u-value and in
/// decibels.
/// \snippet signal.cpp record
std::vector<RecordNumber> recordNumbers(const Aud::Render::IteratorCreationParams& params,
                                        unsigned long modeCode,
                                        std::span<const Aud::Filter::Biquad::Coefficients> sections);

} // namespace audlmd
