#pragma once

#include "contract/LoadServices.hpp"

#include <ios>

namespace Aud::Render {

/// The families of picture formats that every library of the host announces while it is being loaded.
struct FormatFamilies {
    Orv::Image::FormatUID unknown{0};
    Orv::Image::FormatUID uncompressed{100};
    Orv::Image::FormatUID intraFrame{200};
    Orv::Image::FormatUID interFrame{300};
    Orv::Image::FormatUID still{400};
    Orv::Image::FormatUID cameraRaw{500};
    Orv::Image::FormatUID generated{600};
};

/// What every unit of this library builds before its own work at load, and takes down at unload.
struct UnitPrelude {
    std::ios_base::Init standardStreams;
    FormatFamilies formatFamilies;
};

/// The priority of a unit's static initialiser. Priorities fix the order whatever the order of the link:
/// units 1 to 9 register the render functions, unit 10 reads the settings.
constexpr int initialiserPriority(int unit) {
    return 1000 + unit;
}

} // namespace Aud::Render
