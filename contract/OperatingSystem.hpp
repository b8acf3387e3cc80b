#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

template <class Char>
class LightweightString;
template <class T>
struct StdAllocator;

/// The host's notes about a failure, carried inside an exception.
using ExceptionNotes = std::vector<LightweightString<char>, StdAllocator<LightweightString<char>>>;

/// Counts the holders of shared objects. Every operation is atomic; the count lives in the object.
class iReferenceCounts {
public:
    virtual void increment(std::int32_t& count) noexcept = 0;
    /// Returns the count that is left.
    virtual std::int32_t decrement(std::int32_t& count) noexcept = 0;

protected:
    ~iReferenceCounts() = default;
};

/// Storage of strings and of lists of strings that cross library borders.
class iHeap {
public:
    /// Never returns null: throws std::bad_alloc.
    virtual void* allocate(std::size_t bytes) = 0;
    virtual void release(void* storage) noexcept = 0;

protected:
    ~iHeap() = default;
};

/// Is handed the list of notes of every exception that is made, and may add what the host knows about the
/// moment.
class iExceptionRecorder {
public:
    virtual void record(ExceptionNotes& notes) = 0;

protected:
    ~iExceptionRecorder() = default;
};

class iOperatingSystem {
public:
    virtual iReferenceCounts& referenceCounts() noexcept = 0;
    virtual iHeap& heap() noexcept = 0;
    virtual iExceptionRecorder& exceptionRecorder() noexcept = 0;

protected:
    ~iOperatingSystem() = default;
};

/// The operating-system service object: one per process, usable from the first static initialiser on.
/// \snippet minimal_host.cpp system
iOperatingSystem& OS() noexcept;
