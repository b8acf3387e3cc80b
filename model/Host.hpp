#pragma once

#include <cstdint>

namespace audlmd::model {

/// Where a source iterator stands: a segment by its number (-1: the empty handle), and the index of a sample
/// in the segment.
struct Place {
    int segment = -1;
    std::int32_t index = 0;
};

/// The arguments with which the host's source iterator is made.
struct SourceRequest {
    bool forward = false;
    std::int64_t position = 0;
    bool flag = false;
    bool notFlag = true;
    /// Only the forward iterator gets this number.
    std::uint32_t extra = 0;
};

/// What the host loads into the state of an automation at a node. The level starts at uValue and changes by
/// uValueStep per sample, `samples` times. Stationary other than 0: the level stays.
struct LevelSegment {
    std::uint32_t samples = 1;
    float uValue = 0.0F;
    float uValueStep = 0.0F;
    std::uint8_t stationary = 0;
};

/// The host as the model asks it: one member function for each operation that the library asks of its host.
/// The model calls the functions in the order in which the library must make the operations.
///
/// Derive from it where the model is to run. Segments are named by numbers from 0; -1 is the empty handle.
/// Every operation may throw, except the destructions and those marked so; the exception leaves the render
/// call.
class Host {
public:
    Host() = default;
    Host(const Host&) = default;
    Host& operator=(const Host&) = default;
    virtual ~Host() = default;

    /// Asks the strip of the record for the cookie of its material.
    virtual void stripCookie() = 0;
    /// In samples. Not an operation: the iterator carries the number. Never throws.
    virtual std::int64_t materialLength() const = 0;
    /// Makes the source iterator and returns its place. Handles that the host makes on the way go to
    /// adoptSegment.
    virtual Place makeSource(const SourceRequest& request) = 0;
    /// `forward` tells which of the two iterators.
    virtual void destroySource(bool forward) = 0;
    /// The iterator enters the material at its first or last sample. Each returns the iterator's new place.
    virtual Place hitFirst() = 0;
    virtual Place hitLast() = 0;
    /// The iterator leaves segment `from` at its end, or at its start. Each returns the iterator's new place.
    virtual Place moveForward(int from) = 0;
    virtual Place moveReverse(int from) = 0;
    /// A sample inside the material was read while its segment was not ready.
    virtual void countUnderrun() = 0;

    /// One handle more, made by the host inside makeSource: counted, but no operation of the library. Never
    /// throws.
    virtual void adoptSegment() = 0;
    /// A new empty handle. The next three functions copy, assign and destroy handles; each of them is one
    /// operation.
    virtual void makeSegment() = 0;
    virtual void copySegment(int segment) = 0;
    virtual void assignSegment(int from, int to) = 0;
    virtual void destroySegment(int segment) = 0;
    /// An Aud::eSegmentStatus, or another number for "not ready". Asked anew for every sample that is read,
    /// because loading may end at any time.
    virtual int status(int segment) = 0;
    /// Valid as long as a handle on the segment is held. Asked only for a segment that is ready.
    virtual const float* samples(int segment) = 0;
    /// In samples.
    virtual std::int32_t length(int segment) = 0;

    /// The event of the segment's request, then the wait for the event, in milliseconds. Two operations,
    /// because either may throw; releaseEvent() follows a wait in any case.
    virtual void requestEvent(int segment) = 0;
    virtual void wait(int segment, std::uint32_t timeOut) = 0;
    /// Gives the event back, also after a wait that threw. Never throws.
    virtual void releaseEvent() = 0;

    /// Filters one sample by one band of the equaliser, and returns the result. Bands are counted from 0, in
    /// the order of the cascade.
    virtual float filter(unsigned int band, float x) = 0;
    /// The last result of a band.
    virtual float lastResult(unsigned int band) = 0;
    /// Binds the automation to its state in the record. Comes before the first nextLevel().
    virtual void bindLevel() = 0;
    /// The automation has reached a node.
    virtual LevelSegment nextLevel(bool forwards) = 0;

    /// libresample's resample_open and resample_process (one output sample, not the last block). Never throw.
    virtual void* openResampler(int highQuality, double minFactor, double maxFactor) = 0;
    /// `used` is how many of the `length` input samples were consumed, for the caller to move on by.
    virtual void resample(void* handle, double factor, float* in, int length, int* used, float* out) = 0;

    /// The library is about to throw a RuntimeError of its own. Never throws. The host may then take notes,
    /// see the exception recorder.
    virtual void recordException() = 0;
};

} // namespace audlmd::model
