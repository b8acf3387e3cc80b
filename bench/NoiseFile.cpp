#include "bench/NoiseFile.hpp"

#include <sndfile.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <vector>

namespace audlmd::bench {

void writeNoise(const std::filesystem::path& path, unsigned int seed, std::int64_t frames) {
    SF_INFO info{};
    info.samplerate = 48000;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (file == nullptr)
        throw std::runtime_error("cannot write '" + path.string() + "'");
    std::minstd_rand random(seed);
    std::vector<float> samples(std::size_t{2} * 48000);
    for (std::int64_t written = 0; written < frames; written += 48000) {
        for (float& sample : samples)
            sample = static_cast<float>(random()) * 0x1p-35F;
        sf_writef_float(file, samples.data(), std::min<std::int64_t>(48000, frames - written));
    }
    sf_close(file);
}

} // namespace audlmd::bench
