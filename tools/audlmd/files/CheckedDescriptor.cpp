#include "tools/audlmd/files/CheckedDescriptor.hpp"

#include <cerrno>
#include <cstddef>
#include <sys/stat.h>
#include <unistd.h>

namespace audlmd::command {
namespace {

CheckedDescriptor& objectOf(void* self) {
    return *static_cast<CheckedDescriptor*>(self);
}

} // namespace

SNDFILE* CheckedDescriptor::open(int mode, SF_INFO& info) {
    SF_VIRTUAL_IO calls{&length, &seek, &read, &write, &tell};
    noted(lseek(descriptor_, 0, SEEK_SET));
    return sf_open_virtual(&calls, mode, &info, this);
}

std::int64_t CheckedDescriptor::noted(std::int64_t result) {
    if (result < 0 && error_ == 0)
        error_ = errno;
    return result;
}

sf_count_t CheckedDescriptor::length(void* self) {
    CheckedDescriptor& file = objectOf(self);
    struct stat status {};
    return file.noted(fstat(file.descriptor_, &status)) < 0 ? -1 : status.st_size + file.pretended_;
}

sf_count_t CheckedDescriptor::seek(sf_count_t offset, int whence, void* self) {
    CheckedDescriptor& file = objectOf(self);
    if (whence == SEEK_END)
        return seek(length(self) + offset, SEEK_SET, self);
    return file.noted(lseek(file.descriptor_, offset, whence));
}

/// A call may be interrupted, or move a part only: the rest follows in the next turn.
sf_count_t CheckedDescriptor::read(void* bytes, sf_count_t count, void* self) {
    CheckedDescriptor& file = objectOf(self);
    sf_count_t done = 0;
    while (done < count) {
        const ssize_t got = ::read(file.descriptor_, static_cast<std::byte*>(bytes) + done,
                                   static_cast<std::size_t>(count - done));
        if (got < 0 && errno == EINTR)
            continue;
        if (file.noted(got) <= 0)
            break;
        done += got;
    }
    return done;
}

sf_count_t CheckedDescriptor::write(const void* bytes, sf_count_t count, void* self) {
    CheckedDescriptor& file = objectOf(self);
    sf_count_t done = 0;
    while (done < count) {
        const ssize_t put = ::write(file.descriptor_, static_cast<const std::byte*>(bytes) + done,
                                    static_cast<std::size_t>(count - done));
        if (put < 0 && errno == EINTR)
            continue;
        if (file.noted(put) < 0)
            break;
        done += put;
    }
    return done;
}

sf_count_t CheckedDescriptor::tell(void* self) {
    CheckedDescriptor& file = objectOf(self);
    return file.noted(lseek(file.descriptor_, 0, SEEK_CUR));
}

} // namespace audlmd::command
