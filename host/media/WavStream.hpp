#pragma once

#include "host/media/ForeignSound.hpp"

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <utility>

namespace audlmd {

/// Takes a WAV of 32-bit floats apart that comes through a pipe, in pieces of any size. Its header does not
/// know the length: what follows the header to the end are samples.
class WavStream {
public:
    using Begin = std::function<void(const ForeignFormat&)>;
    using Take = std::function<void(std::span<const std::byte>)>;

    WavStream(Begin begin, Take take) : begin_(std::move(begin)), take_(std::move(take)) {}

    /// Throws std::domain_error where the header is not what ffmpeg writes.
    void take(std::span<const std::byte> bytes);

private:
    Begin begin_;
    Take take_;
    /// What has come of the header.
    std::string header_;
    bool hasBegun_ = false;
};

} // namespace audlmd
