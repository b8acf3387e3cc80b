#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>

namespace audlmd {

/// Numbers that the user sets, by key. In order of precedence:
///
/// 1. the environment variable "AUDLMD_" followed by the key, letter for letter, with every character other
///    than a letter or digit as an underscore: AUDLMD_AudioPlaybackSpeedLimit=4;
/// 2. the line "key = value" of the configuration file; of several with one key the last. Everything from a #
///    on is a comment;
/// 3. the default that the caller gives.
///
/// The environment is read at every call, the file once. A value that is not a finite decimal number is
/// reported once on standard error, with the place that it comes from, and the default stands for it. Thread
/// safe, as long as no thread changes the environment.
///
/// config_double asks the one for userFile().
class Configuration {
public:
    /// A file that is not there holds no settings. One that cannot be read, and a line that is not a setting,
    /// are reported on standard error.
    explicit Configuration(const std::filesystem::path& file);

    double number(const std::string& key, double defaultValue) const;

    /// The file that AUDLMD_CONFIG names, else audlmd.conf in XDG_CONFIG_HOME, else ~/.config/audlmd.conf.
    static std::filesystem::path userFile();
    static std::string environmentName(std::string_view key);

private:
    struct Setting {
        std::string value;
        int line = 0;
    };

    void readLine(std::string_view text, int line);
    double parsed(std::string_view value, const std::string& place, double defaultValue) const;

    std::filesystem::path file_;
    std::map<std::string, Setting, std::less<>> settings_;
    mutable std::mutex mutex_;
    mutable std::set<std::string> reported_;
};

} // namespace audlmd
