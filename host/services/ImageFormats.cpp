#include "contract/LoadServices.hpp"

namespace Orv::Image {

/// This host shows no pictures: it has nothing to do with the formats that libraries announce.
FormatUID::FormatUID(std::uint32_t number) : number_(number) {}

FormatUID::~FormatUID() = default;

} // namespace Orv::Image
