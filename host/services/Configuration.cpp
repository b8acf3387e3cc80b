#include "host/services/Configuration.hpp"

#include "contract/LoadServices.hpp"
#include "host/services/Immortal.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <optional>

namespace audlmd {
namespace {

/// Uses no standard stream, because settings are read before the streams are initialised.
void report(const std::string& message) {
    std::fprintf(stderr, "audlmd: %s\n", message.c_str());
}

/// The value of an environment variable. Nothing if the variable is empty or not set. Copied, because the
/// text of getenv() may be overwritten by the next call.
std::optional<std::string> environment(const std::string& name) {
    const char* const value = std::getenv(name.c_str());
    if (value == nullptr || *value == '\0')
        return std::nullopt;
    return value;
}

} // namespace

Configuration::Configuration(const std::filesystem::path& file) : file_(file) {
    std::error_code error;
    if (file.empty() || !std::filesystem::exists(file, error))
        return;
    // A pipe or a device may never end. /dev/null is a way to have no settings.
    if (!std::filesystem::is_regular_file(file, error)) {
        if (file != "/dev/null")
            report(file.string() + ": not a regular file; settings keep their defaults");
        return;
    }
    std::ifstream stream(file);
    int line = 0;
    for (std::string text; std::getline(stream, text);)
        readLine(text, ++line);
    if (!stream.eof())
        report(file.string() + ": cannot be read; settings keep their defaults");
}

void Configuration::readLine(std::string_view text, int line) {
    const std::string_view setting = words::trimmed(text.substr(0, text.find('#')));
    if (setting.empty())
        return;
    // The first sign counts, so that a value may hold further ones.
    const std::size_t sign = setting.find('=');
    const std::string key(words::trimmed(setting.substr(0, sign)));
    if (sign == std::string_view::npos || key.empty())
        report(file_.string() + ":" + std::to_string(line) + ": 'key = value' is expected; line ignored");
    else
        settings_[key] = {std::string(words::trimmed(setting.substr(sign + 1))), line};
}

double Configuration::number(const std::string& key, double defaultValue) const {
    {
        const Lock lock(mutex_);
        asked_.insert(key);
    }
    const std::string variable = environmentName(key);
    // The environment comes first, so that one run can differ from the file.
    if (const std::optional<std::string> value = environment(variable))
        return parsed(*value, "environment variable " + variable, defaultValue);
    const auto setting = settings_.find(key);
    if (setting == settings_.end())
        return defaultValue;
    const auto& [value, line] = setting->second;
    return parsed(value, file_.string() + ":" + std::to_string(line) + ": " + key, defaultValue);
}

std::set<std::string> Configuration::askedFor() const {
    const Lock lock(mutex_);
    return asked_;
}

std::map<std::string, std::string> Configuration::keysOfFile() const {
    std::map<std::string, std::string> keys;
    for (const auto& [key, setting] : settings_)
        keys.emplace(key, file_.string() + ":" + std::to_string(setting.line));
    return keys;
}

double Configuration::parsed(std::string_view value, const std::string& origin, double defaultValue) const {
    if (const std::optional<double> result = words::numberIn(words::trimmed(value));
        result && std::isfinite(*result))
        return *result;
    const Lock lock(mutex_);
    // The same number may be asked for many times; one report for each origin is enough.
    if (reported_.insert(origin).second)
        report(origin + ": '" + std::string(value) + "' is not a number; the default is used");
    return defaultValue;
}

std::filesystem::path Configuration::userFile() {
    constexpr const char* fileName = "audlmd.conf";
    if (const auto named = environment("AUDLMD_CONFIG"))
        return *named;
    if (const auto folder = environment("XDG_CONFIG_HOME"))
        return std::filesystem::path(*folder) / fileName;
    if (const auto home = environment("HOME"))
        return std::filesystem::path(*home) / ".config" / fileName;
    return {};
}

std::string Configuration::environmentName(std::string_view key) {
    std::string name("AUDLMD_");
    for (const char c : key) {
        // Written out, because std::isalnum depends on the locale.
        const bool kept = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        name += kept ? c : '_';
    }
    return name;
}

/// Never destroyed, because libraries may ask until the process ends.
const Configuration& userConfiguration() {
    static const Immortal<Configuration> configuration([] {
        std::filesystem::path file = Configuration::userFile();
        std::error_code error;
        // A file that the user names must be there; one in the usual folder may be missing.
        if (environment("AUDLMD_CONFIG") && !std::filesystem::exists(file, error))
            report(file.string() + ": AUDLMD_CONFIG names this file, but it is not there");
        return file;
    }());
    return configuration.object;
}

} // namespace audlmd

/// The library calls this from its static initialisers, before main() has begun.
double config_double(const char* key, double defaultValue) {
    return audlmd::userConfiguration().number(key, defaultValue);
}
