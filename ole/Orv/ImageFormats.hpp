#pragma once

#include "host/ImageFormat.hpp"

namespace Orv::Image {

/// The families of picture formats that every library of the host announces while it is being loaded, whether
/// it handles pictures or not.
struct FormatFamilies {
    FormatUID unknown{0};
    FormatUID uncompressed{100};
    FormatUID intraFrame{200};
    FormatUID interFrame{300};
    FormatUID still{400};
    FormatUID cameraRaw{500};
    FormatUID generated{600};
};

} // namespace Orv::Image
