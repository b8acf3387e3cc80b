#pragma once

#include "host/signal/StripSettings.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>

// What the fuzz targets have in common. Each target is a program of its own, which libFuzzer calls with one
// input after another.

namespace audlmd::fuzz {

/// Ends the process where something does not hold that a target asserts: libFuzzer then keeps the input.
inline void require(bool holds, const std::string& what) {
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what.c_str());
    std::abort();
}

/// A message for the user is one line, and not empty.
inline void requireOneLine(std::string_view message) {
    require(!message.empty() && message.find('\n') == std::string_view::npos,
            "a message is one line: " + std::string(message));
}

inline void requireFinite(std::span<const float> samples) {
    for (const float sample : samples)
        require(std::isfinite(sample), "a sample is a number: " + std::to_string(sample));
}

/// A file without a place on a disk, for readers that take a path.
class FileInMemory {
public:
    FileInMemory() : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
        require(descriptor_ >= 0, "there is a file in memory");
    }
    ~FileInMemory() { close(descriptor_); }
    FileInMemory(const FileInMemory&) = delete;
    FileInMemory& operator=(const FileInMemory&) = delete;

    void hold(std::span<const std::uint8_t> bytes) {
        require(ftruncate(descriptor_, 0) == 0 &&
                    pwrite(descriptor_, bytes.data(), bytes.size(), 0) == std::ssize(bytes),
                "a file in memory takes bytes");
    }
    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

/// How far what is drawn may lie from what a user would ask for.
enum class Reach { usual, anything };

/// Numbers from `least` to `most`; with Reach::anything any number now and then, infinities and NaN among
/// them.
inline double drawNumber(FuzzedDataProvider& data, Reach reach, double least, double most) {
    if (reach == Reach::usual || data.ConsumeIntegral<std::uint8_t>() >= 64)
        return data.ConsumeFloatingPointInRange(least, most);
    constexpr double special[] = {0.0,     -0.0,    std::numeric_limits<double>::infinity(),
                                  5e-324,  1e-300,  -std::numeric_limits<double>::infinity(),
                                  1.7e308, 3.4e38,  std::numeric_limits<double>::quiet_NaN(),
                                  0x1p-30, 1.0e-45, 0x1p62};
    return data.ConsumeBool() ? data.PickValueInArray(special) : data.ConsumeFloatingPoint<double>();
}

/// From `least` to `most`; with Reach::anything any number now and then, those at the limits among them.
inline std::int64_t drawWhole(FuzzedDataProvider& data, Reach reach, std::int64_t least, std::int64_t most) {
    if (reach == Reach::usual || data.ConsumeIntegral<std::uint8_t>() >= 64)
        return data.ConsumeIntegralInRange(least, most);
    constexpr std::int64_t special[] = {std::int64_t{1} << 60,
                                        -(std::int64_t{1} << 60),
                                        std::int64_t{1} << 43,
                                        (std::int64_t{1} << 32) - 1,
                                        (std::int64_t{1} << 31) - 64,
                                        std::numeric_limits<std::int64_t>::max(),
                                        std::numeric_limits<std::int64_t>::min()};
    return data.ConsumeBool() ? data.PickValueInArray(special) : data.ConsumeIntegral<std::int64_t>();
}

/// Settings of a strip whose material has `length` samples. Throws std::invalid_argument where an automation
/// has nodes that it cannot have.
StripSettings drawSettings(FuzzedDataProvider& data, Reach reach, std::int64_t length);

} // namespace audlmd::fuzz
