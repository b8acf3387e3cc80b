#pragma once

#include <cstdint>

namespace Orv::Image {

/// The number of a picture format, announced to the host while a library is being loaded.
class FormatUID {
public:
    explicit FormatUID(std::uint32_t number);
    FormatUID(const FormatUID&) = delete;
    FormatUID& operator=(const FormatUID&) = delete;
    ~FormatUID();

    std::uint32_t number() const { return number_; }

private:
    std::uint32_t number_;
};

} // namespace Orv::Image
