#pragma once

#include "ole/Orv/ImageFormats.hpp"

#include <ios>

namespace Aud::Render {

/// What every unit of this library builds before its own work at load, and takes down at unload.
struct UnitPrelude {
    std::ios_base::Init standardStreams;
    Orv::Image::FormatFamilies formatFamilies;
};

/// The static initialisers run in the order of these priorities, whatever the order of the link: units 1 to 9
/// register the render functions, the tenth reads the settings.
constexpr int initialiserPriority(int unit) {
    return 1000 + unit;
}

} // namespace Aud::Render
