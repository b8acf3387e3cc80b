#pragma once

#include "host/timeline/OtioItem.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::timeline {

/// What editing programs keep in the metadata of an item's effects, under any namespace: a list "Parameters"
/// of objects with a "Parameter ID", a "Parameter Value" and "Key Frames".
///
///     volume         decibels, and key frames: {"12": {"Value": -6.0}}, in frames from the item's start
///     faderIn        frames
///     faderOut       frames
///     pan            -100 (left) to 100 (right)
///     eq band index  0 to 5: one effect for each band
///     eq frequency   hertz
///     eq dB gain     tenths of a decibel
///     eq qFactor     thousandths
///
/// Other parameters become notes, unless they have no value or their "Default Parameter Value". Other
/// programs write a "DisplayName", and the value in a "StartValue" and a list "Keyframes". Effects and
/// namespaces count for nothing that are not "Enabled", and those that a parameter of theirs switches off:
/// a "Bypass" that is true, or one to "enable" that is false. An effect of Type 64 switches all bands. The
/// shape of a band is not written: those in the middle are peaks where nobody changes them, the others become
/// notes.
class ExportedEffects {
public:
    /// `frameRate` is that of the item. All three must outlive this object.
    ExportedEffects(const Rational& frameRate, const Reading& reading, OtioItem& item)
        : frameRate_(frameRate), reading_(reading), item_(item) {}

    /// Gains of several effects add up; of several fades, automations or pans the last one counts. Throws
    /// TimelineError for a value that is none.
    void read(const Json& effect);

    /// Once all effects are read: the item gets the bands, unless they are switched off.
    void finish();

private:
    struct ExportedBand {
        /// Nothing where the file has no number for it, or -1.
        std::optional<std::size_t> index;
        std::optional<double> frequency;
        double gainDb = 0.0;
        double q = 1.0;
        bool isMoved = false;
    };

    void readBlock(const Json& effect, const Json& block, const Json& parameters);
    /// Both return whether the parameter is played.
    bool readParameter(const Json& parameter, ExportedBand& band);
    bool readBand(const std::string& name, const Json& value, bool isIdle, ExportedBand& band);

    const Rational& frameRate_;
    const Reading& reading_;
    OtioItem& item_;
    std::vector<ExportedBand> bands_;
    bool equaliserIsOn_ = true;
};

} // namespace audlmd::timeline
