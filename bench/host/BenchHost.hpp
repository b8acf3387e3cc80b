#pragma once

#include "contract/SampleCache.hpp"

#include <cstdint>
#include <vector>

/// The smallest complete host, for measuring the library: every operation of the render functions is a call
/// into another library, does the least work that is still right, and leaves nothing out. A host that did
/// less would make the ratios to the floor worse than any real host sees.
namespace audlmd::bench {

/// A cache with one material and segments that are all ready. Every cookie reads that material.
class Cache : public Aud::SampleCache {
public:
    static constexpr std::int32_t segmentLength = 65536;

    explicit Cache(std::vector<float> material);
    Cache(const Cache&) = delete;
    Cache& operator=(const Cache&) = delete;
    ~Cache();

    std::int64_t length() const { return static_cast<std::int64_t>(material_.size()); }
    const std::vector<float>& material() const { return material_; }
    /// The segment that holds the sample at `position`. Outside the material, an empty handle.
    const Aud::SampleCacheSegment& segmentAt(std::int64_t position) const;

private:
    std::vector<float> material_;
    std::vector<Aud::SampleCacheSegment> segments_;
};

} // namespace audlmd::bench
