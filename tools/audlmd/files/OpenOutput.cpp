#include "tools/audlmd/files/OpenOutput.hpp"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace audlmd::command {

OpenOutput::OpenOutput(const OutputPath& target) : path_(target.path) {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    if (!target.isStream) {
        temporary_.emplace(path_);
        return;
    }
    stream_ =
        target.inherited ? dup(*target.inherited) : open(path_.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (stream_ < 0)
        failToWrite(path_, errno);
}

OpenOutput::~OpenOutput() {
    if (stream_ >= 0)
        close(stream_);
}

void OpenOutput::write(std::string_view content) {
    while (!content.empty()) {
        const ssize_t count = ::write(descriptor(), content.data(), content.size());
        // A call may be interrupted, or write a part only: the rest follows in the next turn.
        if (count < 0 && errno != EINTR)
            failToWrite(path_, errno);
        content.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
}

void OpenOutput::complete() {
    if (temporary_)
        temporary_->complete();
    else if (close(std::exchange(stream_, -1)) != 0)
        failToWrite(path_, errno);
}

void OpenOutput::commit() {
    if (temporary_)
        temporary_->commit();
}

void writeOutput(const OutputPath& target, std::string_view content) {
    OpenOutput output(target);
    output.write(content);
    output.complete();
    output.commit();
}

} // namespace audlmd::command
