#pragma once

#include <sndfile.h>

#include <cstdint>

namespace audlmd::command {

/// The descriptor of a regular file as libsndfile reads and writes it. Remembers the first error: libsndfile
/// forgets those of writing a header, and a file whose header states a length of 0 would pass for whole.
class CheckedDescriptor {
public:
    /// The descriptor stays the caller's. A file that is read is told to be `pretended` bytes longer than it
    /// is: then a header that states no length, for which libsndfile takes that of the file, gives a wrong
    /// one.
    explicit CheckedDescriptor(int descriptor, std::int64_t pretended = 0)
        : descriptor_(descriptor), pretended_(pretended) {}
    ~CheckedDescriptor() = default;
    CheckedDescriptor(const CheckedDescriptor&) = delete;
    CheckedDescriptor& operator=(const CheckedDescriptor&) = delete;

    /// Opens the file from its start, in one of libsndfile's modes. Null on failure, as sf_open(). This
    /// object must outlive the result.
    SNDFILE* open(int mode, SF_INFO& info);

    /// The value of errno after the first call that failed; 0 if none did.
    int error() const { return error_; }

private:
    // What libsndfile calls, with this object as `self`.
    static sf_count_t length(void* self);
    static sf_count_t seek(sf_count_t offset, int whence, void* self);
    static sf_count_t read(void* bytes, sf_count_t count, void* self);
    static sf_count_t write(const void* bytes, sf_count_t count, void* self);
    static sf_count_t tell(void* self);

    /// Notes an error where a system call has returned -1. Returns the result.
    std::int64_t noted(std::int64_t result);

    int descriptor_;
    std::int64_t pretended_;
    int error_ = 0;
};

} // namespace audlmd::command
