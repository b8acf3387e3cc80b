#pragma once

#include "contract/DynamicLevel.hpp"
#include "contract/Identity.hpp"
#include "contract/LoadServices.hpp"
#include "contract/SampleCache.hpp"
#include "loop_modes/IteratorCreationParams.hpp"
#include "loop_modes/ModeCode.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace audlmd {

/// A material that a host has made for the check.
struct CheckedMaterial {
    /// What the host gives as the record's cache. Not owned.
    Aud::SampleCache* cache;
    /// What readers are made with.
    Cookie cookie;
    /// A handle of a strip of this material: the cookie above is expected of get_strip_cookie().
    ce_handle strip;
};

/// A point of an automation: a position in samples and the u-value there.
struct CheckedLevel {
    std::int64_t position;
    float uValue;
};

/// A type of the contract and its size in bytes.
struct TypeSize {
    const char* type;
    std::size_t bytes;
};
/// As whoever includes this is compiled: the host on one side, the rules and the renderer on the other.
constexpr std::array hostLayout{
    TypeSize{"Filter::Biquad", sizeof(Aud::Filter::Biquad)},
    TypeSize{"DynamicLevelApplyingIteratorState",
             sizeof(Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState)},
    TypeSize{"ce_handle", sizeof(ce_handle)},
    TypeSize{"FormatUID", sizeof(Orv::Image::FormatUID)},
    TypeSize{"SampleCacheSegment", sizeof(Aud::SampleCacheSegment)},
    TypeSize{"SampleCache::ForwardIterator", sizeof(Aud::SampleCache::ForwardIterator)},
    TypeSize{"SampleCache::ReverseIterator", sizeof(Aud::SampleCache::ReverseIterator)},
    TypeSize{"PerSourceRecord", sizeof(Aud::Render::PerSourceRecord)},
    TypeSize{"IteratorCreationParams", sizeof(Aud::Render::IteratorCreationParams)},
};

/// What a host's author writes for audlmd-host-check, because the contract does not say how a host makes its
/// materials and automations. In audlmd-host-check each rule has an object in a process of its own; in a
/// program with a host one object serves all rules.
/// \snippet minimal_host_check.cpp host
class HostUnderCheck {
public:
    using LevelState = Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState;

    /// The sizes that the host is compiled with.
    const TypeSize* layout() const { return layout_; }

    /// How many samples the check's materials have: enough for three segments, of which the last is shorter.
    virtual std::int64_t length() const = 0;

    /// Makes a material of these samples, under a cookie of its own. A reader that waits must read all of
    /// them.
    virtual CheckedMaterial add(std::span<const float> samples) = 0;
    /// Makes a material whose samples do not arrive before load(): its segments stay requested. Nothing, the
    /// default, leaves the rules about late samples unchecked.
    virtual std::optional<CheckedMaterial> addLate(std::span<const float>) { return {}; }
    /// Lets the samples of a late material arrive, now or soon.
    virtual void load(const CheckedMaterial&) {}

    /// Forgets a material: its samples go when the last handle of its segments has gone.
    virtual void remove(const CheckedMaterial& material) = 0;
    /// Whether the samples of a material are still kept, by the cache or by a handle.
    virtual bool exists(const CheckedMaterial& material) const = 0;
    /// How many samples of a material were counted as underruns.
    virtual std::uint64_t underruns(const CheckedMaterial& material) const = 0;

    /// The position with which a reverse reader is made that reads this sample first. The default suits a
    /// host that takes the exclusive end.
    virtual long reversePosition(std::int64_t sample) const { return static_cast<long>(sample) + 1; }

    /// Starts a walk at a position, as before a render call. The points are in order of position, and live
    /// longer than the walk.
    virtual void placeLevel(LevelState& state, std::span<const CheckedLevel> points, std::int64_t position,
                            Aud::Render::DynamicLevelDirection direction) = 0;

protected:
    /// The default argument is the host's own array, because each caller has its own. An inline function with
    /// these sizes would be one for host and check, whichever the linker or the optimiser takes.
    explicit HostUnderCheck(const TypeSize* layout = hostLayout.data()) : layout_(layout) {}
    ~HostUnderCheck() = default;

private:
    const TypeSize* layout_;
};

/// The host defines it, beside its operations.
HostUnderCheck& hostUnderCheck();

} // namespace audlmd
