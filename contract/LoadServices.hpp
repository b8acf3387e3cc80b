#pragma once

#include <cstdint>

/// The value of a setting, or `defaultValue` where the setting is not set.
///
/// Usable from the first static initialiser on: the renderer calls it while it is being loaded, at most three
/// times.
/// \snippet minimal_host.cpp settings
double config_double(const char* key, double defaultValue);

namespace Orv::Image {

/// The number of a picture format. Every library of the host announces the same formats while it is being
/// loaded, whether it handles pictures or not; the destructor takes the announcement back at unload.
class FormatUID {
public:
    explicit FormatUID(std::uint32_t number);
    FormatUID(const FormatUID&) = delete;
    FormatUID& operator=(const FormatUID&) = delete;
    ~FormatUID();

private:
    /// The host's own; a host without pictures does not read it. The size is compiled into the renderer.
    [[maybe_unused]] std::uint32_t number_;
};

} // namespace Orv::Image
