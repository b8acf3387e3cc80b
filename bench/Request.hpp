#pragma once

#include "bench/host/BenchHost.hpp"
#include "loop_modes/IteratorCreationParams.hpp"
#include "loop_modes/ModeCode.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::bench {

/// A tone, in several segments.
std::vector<float> testMaterial();

/// A render request that keeps every stage of a mode at work: a fade that runs through its phases, an
/// automation on its way to a node, an equaliser that rings, and a source that stays inside a segment. A
/// second render of the request starts at the same place, but the state in the record runs on: after 48,000
/// samples the automation has arrived.
class Request {
public:
    /// Any host's cache will do, with segments of Cache::segmentLength and testMaterial() under the default
    /// cookie. The fade runs over `sourceSamples`, the samples that one call reads. `speed` is in source
    /// samples per output sample; a mode without conversion ignores it.
    Request(unsigned int code, Aud::SampleCache& cache, unsigned int sourceSamples, double speed);
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;
    ~Request();

    const Aud::Render::ModeFields& fields() const { return fields_; }
    double speed() const { return speed_; }
    /// The first sample, of calls in either direction.
    std::int64_t start() const { return start_; }
    Aud::Render::IteratorCreationParams& params() { return params_; }
    Aud::Render::PerSourceRecord& record() { return record_; }

private:
    Aud::Render::ModeFields fields_;
    double speed_;
    std::int64_t start_;
    bool wait_ = true;
    std::uint32_t segmentsAhead_ = 0;
    Aud::SubSamplePos subSampleStart_{0, 0};
    Aud::SubSamplePos subSampleStep_;
    float floatSpeed_;
    Orv::OutputGearing gearing_;
    Aud::Render::PerSourceRecord record_;
    Aud::Render::IteratorCreationParams params_;
};

/// Renders such a request through the despatch table and through the model, twice in a row, and says where
/// the two differ; nothing if they do not.
std::optional<std::string> differenceFromModel(unsigned int code, std::size_t outputType, Cache& cache,
                                               double speed);

} // namespace audlmd::bench
