#include "host/cache/SampleSource.hpp"

#include <algorithm>

namespace audlmd {

void MemorySource::read(std::int64_t position, std::span<float> samples) {
    std::copy_n(samples_.begin() + position, samples.size(), samples.begin());
}

} // namespace audlmd
