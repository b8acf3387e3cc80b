#include "host/signal/GainLaws.hpp"
#include "tools/audlmd/mix/picture/TimelinePainter.hpp"

#include <algorithm>

namespace audlmd::command {

using namespace plot;

namespace {

// In points. Narrower boxes have no frame, no text, no lines: they would cover the waveform.
constexpr double narrowestWithFrame = 3.0;
constexpr double narrowestWithLines = 8.0;
constexpr double narrowestWithText = 16.0;
constexpr double nameSize = 10.0;
constexpr double smallNameSize = 7.5;

/// The part of a box above the waveform, for the texts.
Rectangle headOf(const Rectangle& box) {
    return {box.left, box.top, box.width, box.height < 36.0 ? 10.0 : 15.0};
}

Rectangle bodyOf(const Rectangle& box) {
    const double head = headOf(box).height;
    return {box.left, box.top + head, box.width, box.height - head - 1.0};
}

/// A u-value of the mixer-style curve. The foot of the body is silence, the head the fader's end stop.
double heightAt(const Rectangle& body, float uValue) {
    return body.bottom() - body.height * static_cast<double>(uValue) / faderTop;
}

void paintWave(const Pen& pen, const TimelineLayout& layout, const StripSketch& strip,
               const Rectangle& body) {
    const double middle = body.top + body.height / 2.0;
    const auto yOf = [&](std::size_t column, double sign) {
        return middle - sign * body.height / 2.0 * static_cast<double>(std::min(strip.peaks[column], 1.0F));
    };
    cairo_t* const context = pen.context();
    const auto edge = [&](std::size_t column, std::size_t border, double sign) {
        cairo_line_to(context, layout.x(strip.borders[border]), yOf(column, sign));
    };
    for (std::size_t column = 0; column < strip.columnCount(); ++column) {
        edge(column, column, 1.0);
        edge(column, column + 1, 1.0);
    }
    for (std::size_t column = strip.columnCount(); column-- > 0;) {
        edge(column, column + 1, -1.0);
        edge(column, column, -1.0);
    }
    cairo_close_path(context);
    pen.colour(PictureColours::wave);
    cairo_fill_preserve(context);
    // Silence is a thin line.
    pen.stroke(0.4, false);
}

void paintLines(const Pen& pen, const TimelineLayout& layout, const StripSketch& strip,
                const Rectangle& body) {
    if (strip.fade.empty() && strip.levels.empty())
        return;
    pen.colour(Palette::outline, 0.6);
    const double unity = heightAt(body, 1.0F);
    pen.line(body.left, unity, body.right(), unity, 0.5, true);
    cairo_t* const context = pen.context();
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
    for (std::size_t column = 0; column < strip.levels.size(); ++column) {
        const LevelRange& range = strip.levels[column];
        const double x = layout.x((strip.borders[column] + strip.borders[column + 1]) / 2.0);
        cairo_line_to(context, x, heightAt(body, range.lowest));
        cairo_line_to(context, x, heightAt(body, range.highest));
    }
    pen.colour(PictureColours::level);
    pen.stroke(1.8, false);
    for (std::size_t border = 0; border < strip.fade.size(); ++border)
        cairo_line_to(context, layout.x(strip.borders[border]), heightAt(body, strip.fade[border]));
    pen.colour(PictureColours::fade);
    pen.stroke(1.1, false);
}

void paintTexts(const Pen& pen, const StripSketch& strip, const Rectangle& box) {
    constexpr double margin = 3.0;
    const Rectangle head = headOf(box);
    const double room = box.width - 2.0 * margin;
    const double middle = head.top + head.height / 2.0;
    const bool small = head.height < 12.0;
    pen.font(small ? smallNameSize : nameSize);
    pen.colour(!strip.failure.empty() ? PictureColours::trouble
               : strip.isSilent       ? Palette::outline
                                      : Palette::text);
    const std::string reason = strip.isSilent          ? "silent: "
                               : strip.failure.empty() ? ""
                                                       : strip.failure + ": ";
    const std::string name = pen.fitted(reason + strip.name, room);
    pen.write(name, box.left + margin, middle, {0.0, 0.5});
    const double noteLeft = box.left + margin + pen.widthOf(name) + 8.0;
    pen.font(small ? smallNameSize : nameSize - 1.0);
    pen.colour(Palette::outline);
    if (noteLeft + pen.widthOf(strip.note) <= box.left + margin + room)
        pen.write(strip.note, noteLeft, middle, {0.0, 0.5});
}

} // namespace

void paintSilence(const Pen& pen, const Rectangle& area) {
    pen.colour(PictureColours::trouble, 0.25);
    pen.fill(area);
    pen.colour(PictureColours::trouble);
    pen.hatch(area, 6.0, 0.8);
}

void paintStrip(const Pen& pen, const TimelineLayout& layout, const StripSketch& strip,
                const Rectangle& box) {
    const Rectangle body = bodyOf(box);
    pen.colour(PictureColours::wave, 0.15);
    pen.fill(box);
    if (strip.failure.empty() && !strip.isSilent)
        paintWave(pen, layout, strip, body);
    if (box.width >= narrowestWithLines)
        paintLines(pen, layout, strip, body);
    if (strip.failure.empty())
        for (const TimelineSpan& span : strip.silent)
            paintSilence(pen, layout.part(body, span));
    else
        paintSilence(pen, body);
    pen.colour(PictureColours::trouble);
    for (const TimelineSpan& span : strip.overloads)
        pen.fill(layout.part({body.left, body.top, body.width, 3.0}, span));
    pen.colour(!strip.failure.empty() ? PictureColours::trouble
               : strip.isSilent       ? Palette::outline
                                      : Palette::blue);
    if (box.width >= narrowestWithFrame)
        pen.outline(box, 0.6);
    if (box.width >= narrowestWithText)
        paintTexts(pen, strip, box);
}

} // namespace audlmd::command
