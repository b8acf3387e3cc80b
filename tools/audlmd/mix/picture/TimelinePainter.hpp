#pragma once

#include "tools/audlmd/mix/picture/TimelineLayout.hpp"
#include "tools/plot/Pen.hpp"

namespace audlmd::command {

/// The colours of the picture. One colour has one meaning; red is trouble.
namespace PictureColours {
inline constexpr plot::Colour wave = plot::Palette::skyBlue;
inline constexpr plot::Colour fade = plot::Palette::black;
inline constexpr plot::Colour level = plot::Palette::purple;
inline constexpr plot::Colour marker = plot::Palette::green;
inline constexpr plot::Colour trouble = plot::Palette::alarm;
} // namespace PictureColours

/// Draws a strip into its box: waveform, lines of fade and level, trouble, name and note.
void paintStrip(const plot::Pen& pen, const TimelineLayout& layout, const StripSketch& strip,
                const plot::Rectangle& box);

/// Draws the whole picture.
void paintTimeline(const plot::Pen& pen, const TimelineSketch& sketch, const TimelineLayout& layout);

/// A translucent red area with hatching: what should have sounded and did not.
void paintSilence(const plot::Pen& pen, const plot::Rectangle& area);

} // namespace audlmd::command
