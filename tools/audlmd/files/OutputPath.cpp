#include "tools/audlmd/files/OutputPath.hpp"

#include "tools/audlmd/CommandError.hpp"

#include <cerrno>
#include <charconv>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace audlmd::command {
namespace {

/// The number of the descriptor that a path names, or nothing for a path that names none.
std::optional<int> inheritedDescriptor(const std::filesystem::path& path) {
    const std::string text = path.lexically_normal().string();
    if (text == "-" || text == "/dev/stdout")
        return STDOUT_FILENO;
    if (text == "/dev/stderr")
        return STDERR_FILENO;
    for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
        int number = -1;
        if (text.starts_with(folder) &&
            std::from_chars(text.data() + folder.size(), text.data() + text.size(), number).ec == std::errc())
            return number;
    }
    return std::nullopt;
}

/// A link that leads to no file is followed, too. Call this where the system follows the path, or finds
/// nothing at its end: so there is no circle.
std::filesystem::path behindLinks(std::filesystem::path path) {
    std::error_code none;
    while (std::filesystem::is_symlink(std::filesystem::symlink_status(path, none)))
        path = path.parent_path() / std::filesystem::read_symlink(path);
    return path;
}

/// What a path or a descriptor leads to, for comparison.
struct Found {
    std::filesystem::path canonical;
    bool isThere = false;
    struct stat status {};
};

Found find(const std::filesystem::path& path) {
    std::error_code unknown;
    Found found{.canonical = std::filesystem::weakly_canonical(std::filesystem::absolute(path), unknown)};
    found.isThere = stat(path.c_str(), &found.status) == 0;
    return found;
}

Found find(const OutputPath& output) {
    if (!output.inherited)
        return find(output.path);
    Found found;
    found.isThere = fstat(*output.inherited, &found.status) == 0;
    return found;
}

bool isSame(const Found& a, const Found& b) {
    if (a.isThere && b.isThere)
        return a.status.st_dev == b.status.st_dev && a.status.st_ino == b.status.st_ino &&
               !S_ISCHR(a.status.st_mode);
    return !a.canonical.empty() && a.canonical == b.canonical;
}

} // namespace

OutputPath::OutputPath(const std::filesystem::path& given)
    : path(given), inherited(inheritedDescriptor(given)) {
    if (inherited) {
        isStream = true;
        return;
    }
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::none)
        failToWrite(path, error.value());
    if (std::filesystem::is_directory(status))
        throw CommandError("'" + path.string() + "' cannot be written: it is a folder", ExitStatus::output);
    isStream = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
    if (!isStream)
        path = behindLinks(path);
}

void requireOther(const OutputPath& output, const std::filesystem::path& input, const std::string& what) {
    if (isSame(find(output), find(input)))
        throw CommandError("'" + output.path.string() + "' is " + what + "; name another file to write");
}

void requireDistinct(std::span<const OutputPath> outputs) {
    for (std::size_t second = 1; second < outputs.size(); ++second)
        for (std::size_t first = 0; first < second; ++first)
            if (isSame(find(outputs[first]), find(outputs[second])))
                throw CommandError("'" + outputs[first].path.string() + "' and '" +
                                   outputs[second].path.string() +
                                   "' are one file; name another one for each output");
}

void failToWrite(const std::filesystem::path& path, int error) {
    throw CommandError("'" + path.string() + "' cannot be written: " + std::generic_category().message(error),
                       ExitStatus::output);
}

} // namespace audlmd::command
