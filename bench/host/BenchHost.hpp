#pragma once

#include "host/SampleCache.hpp"

#include <cstdint>
#include <vector>

/// The smallest host that really is one, to measure the library with: every operation that the render
/// functions call is a function of another library that does the least work it can do and still be right.
/// Whatever it leaves out would make the library look better than it is.
namespace audlmd::bench {

/// A cache whose segments are all ready. Its material is read whatever the cookie.
class Cache : public Aud::SampleCache {
public:
    static constexpr std::int32_t segmentLength = 65536;

    explicit Cache(std::vector<float> material);
    Cache(const Cache&) = delete;
    Cache& operator=(const Cache&) = delete;
    ~Cache();

    std::int64_t length() const { return static_cast<std::int64_t>(material_.size()); }
    const std::vector<float>& material() const { return material_; }
    /// The segment that holds the sample at `position`, an empty one outside the material.
    const Aud::SampleCacheSegment& segmentAt(std::int64_t position) const;

private:
    std::vector<float> material_;
    std::vector<Aud::SampleCacheSegment> segments_;
};

/// Samples that a source iterator asked for inside the material and did not get, in this process.
std::uint64_t underruns();

} // namespace audlmd::bench
