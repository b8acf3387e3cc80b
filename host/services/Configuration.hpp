#pragma once

#include "host/services/Threads.hpp"

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace audlmd {

/// Numbers that the user sets, by key. The first of these that is there gives the number:
///
/// 1. The environment variable that environmentName() returns, read at every call. An empty variable does not
///    count. Example: AUDLMD_AudioPlaybackSpeedLimit=4.
/// 2. The line "key = value" of the configuration file, the last one if several have the key. The text from a
///    # to the end of the line is a comment. The file is read once, when the configuration is made.
/// 3. The default that the caller gives.
///
/// A number is a finite decimal number with a point, in any locale: 2.5, 25e-1. Anything else counts as the
/// default, and is reported on standard error with the file and line, or the variable, where it stands: once
/// for each.
///
/// Thread safe. The trap: no thread may change the environment meanwhile.
///
/// config_double, which the library calls, uses the configuration of userFile().
/// \snippet services.cpp configuration
class Configuration {
public:
    /// Reads the file. A file that is not there holds no settings. Reports on standard error, instead of
    /// throwing, if the file is a folder, a pipe or a device, cannot be read, or a line is not a setting. An
    /// empty path is allowed, and means no file.
    explicit Configuration(const std::filesystem::path& file);

    /// The number for a key, in the user's units. Returns the default for a key that nobody has set. Trap: a
    /// number that is out of range for its purpose is returned as written; the caller limits the number.
    double number(const std::string& key, double defaultValue) const;

    /// The keys that number() was asked for so far.
    std::set<std::string> askedFor() const;
    /// The keys of the file, and where each stands: "/home/me/.config/audlmd.conf:3".
    std::map<std::string, std::string> keysOfFile() const;

    /// The file that AUDLMD_CONFIG names, else audlmd.conf in XDG_CONFIG_HOME, else ~/.config/audlmd.conf.
    /// Empty if none of these variables nor HOME is set. The file need not exist.
    static std::filesystem::path userFile();
    /// "AUDLMD_" and the key, in which every character but the letters A to Z, a to z and the digits is
    /// replaced by an underscore. Trap: keys that differ only in such characters share a variable.
    static std::string environmentName(std::string_view key);

private:
    struct Setting {
        std::string value;
        /// Counted from 1.
        int line = 0;
    };

    /// Stores the setting of one line. The number is read later, when somebody asks, so that a mistake in an
    /// unused key disturbs nobody.
    void readLine(std::string_view text, int line);
    /// `origin` is where the value comes from, for the report.
    double parsed(std::string_view value, const std::string& origin, double defaultValue) const;

    std::filesystem::path file_;
    /// Never changes once the configuration is made.
    std::map<std::string, Setting, std::less<>> settings_;
    mutable Mutex mutex_;
    mutable std::set<std::string> asked_ AUDLMD_GUARDED_BY(mutex_);
    /// The origins of the values that were reported.
    mutable std::set<std::string> reported_ AUDLMD_GUARDED_BY(mutex_);
};

/// What config_double reads, made at the first use. Never destroyed.
const Configuration& userConfiguration();

} // namespace audlmd
