#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>

namespace audlmd::command {

/// Waits until files change: are written and closed, replaced, removed, or come where nothing was. What
/// changes from add() on is told, also between two calls of wait().
class FileWatch {
public:
    /// Throws std::system_error where the system has no watches left; so do the others.
    FileWatch();
    ~FileWatch();
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;

    /// A file that need not be there, nor its folder. A file behind a symbolic link counts as well.
    void add(const std::filesystem::path& file);
    /// A folder in which, and below which, a file that is not there may come under its name, with any
    /// extension.
    void addFolder(const std::filesystem::path& folder);
    /// A file whose changes do not count: who waits writes it.
    void ignore(const std::filesystem::path& file);

    /// Waits for a change, and then until there is none for a while. Returns the names of what has changed;
    /// nothing where Ctrl-C has ended the waiting.
    std::optional<std::set<std::string>> wait();

private:
    void watchAbove(const std::filesystem::path& file);
    void watchFolder(const std::filesystem::path& folder);
    /// Adds the names of what has changed so far.
    void take(std::set<std::string>& changed);
    bool counts(const std::filesystem::path& changed, unsigned what) const;

    int descriptor_;
    std::map<int, std::filesystem::path> folders_;
    /// In canonical folders.
    std::set<std::filesystem::path> files_;
    std::set<std::filesystem::path> ignored_;
    std::set<std::filesystem::path> searched_;
};

} // namespace audlmd::command
