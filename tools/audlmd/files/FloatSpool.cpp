#include "tools/audlmd/files/FloatSpool.hpp"

#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/files/NamelessFile.hpp"

#include <cerrno>
#include <csignal>
#include <system_error>
#include <unistd.h>

namespace audlmd::command {
namespace {

std::string folderBeside(const OutputPath& output) {
    if (output.isStream)
        return std::filesystem::temp_directory_path().string();
    const std::filesystem::path folder = output.path.parent_path();
    return folder.empty() ? "." : folder.string();
}

} // namespace

FloatSpool::FloatSpool(const OutputPath& output, std::size_t channels, std::int64_t frames)
    : folder_(folderBeside(output)), channels_(channels), frames_(frames),
      descriptor_(makeNamelessFile(folder_)) {
    if (descriptor_ < 0)
        fail("keep", errno);
    // A file that grows too large is then an error of writing.
    std::signal(SIGXFSZ, SIG_IGN);
}

FloatSpool::~FloatSpool() {
    if (descriptor_ >= 0)
        close(descriptor_);
}

std::int64_t FloatSpool::offsetOf(std::size_t channel, std::int64_t frame) const {
    return (static_cast<std::int64_t>(channel) * frames_ + frame) * std::int64_t{sizeof(float)};
}

void FloatSpool::write(std::size_t channel, std::int64_t from, std::span<const float> samples) {
    std::span<const std::byte> bytes = std::as_bytes(samples);
    for (std::int64_t at = offsetOf(channel, from); !bytes.empty();) {
        const ssize_t count = pwrite(descriptor_, bytes.data(), bytes.size(), at);
        if (count < 0 && errno != EINTR)
            fail("keep", errno);
        if (count > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
            at += count;
        }
    }
}

void FloatSpool::read(std::size_t channel, std::int64_t from, std::span<float> samples) const {
    std::span<std::byte> bytes = std::as_writable_bytes(samples);
    for (std::int64_t at = offsetOf(channel, from); !bytes.empty();) {
        const ssize_t count = pread(descriptor_, bytes.data(), bytes.size(), at);
        if (count == 0 || (count < 0 && errno != EINTR))
            fail("give back", count == 0 ? EIO : errno);
        if (count > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(count));
            at += count;
        }
    }
}

void FloatSpool::fail(const std::string& what, int error) const {
    throw CommandError("'" + folder_ + "' cannot " + what + " the samples until their gain is known: " +
                           std::generic_category().message(error),
                       ExitStatus::output);
}

} // namespace audlmd::command
