#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace audlmd {

/// Where the samples of one strip, a single channel, come from.
///
/// Loader threads of a cache call it, several at the same time.
class SampleSource {
public:
    virtual ~SampleSource() = default;

    /// In samples; never changes.
    virtual std::int64_t length() const = 0;

    /// Fills `samples` with those from `position` on. The range lies inside 0 to length(). Throws if it
    /// cannot fill all of it; the text of a std::exception is kept for the user.
    virtual void read(std::int64_t position, std::span<float> samples) = 0;

    /// What a read has to itself, such as an open file. Sources of one resource that is not null are read one
    /// after another, in the order of the requests, while loader threads serve others.
    virtual const void* exclusiveResource() const { return nullptr; }
};

/// A block of memory.
class MemorySource final : public SampleSource {
public:
    explicit MemorySource(std::vector<float> samples) : samples_(std::move(samples)) {}

    std::int64_t length() const override { return static_cast<std::int64_t>(samples_.size()); }
    void read(std::int64_t position, std::span<float> samples) override;

private:
    std::vector<float> samples_;
};

} // namespace audlmd
