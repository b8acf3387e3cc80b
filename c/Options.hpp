#pragma once

#include <nlohmann/json.hpp>

#include <map>
#include <optional>
#include <set>
#include <string>

namespace audlmd::c {

/// The options of a call: texts, key and value by turns. Take what is known, then call finish() or rest().
class Options {
public:
    /// Throws std::invalid_argument for a key without a value, and for one that stands twice. Null is empty.
    explicit Options(const char* const* list);

    std::optional<std::string> take(const std::string& key);
    /// The functions below throw std::invalid_argument, which names the key, for values that are none.
    std::optional<double> takeNumber(const std::string& key);
    std::optional<int> takeWhole(const std::string& key, int lowest, int highest);
    bool takeFlag(const std::string& key, bool otherwise);

    /// What was not taken, as members of an object: each value is what it is as JSON, or else a text.
    nlohmann::json rest();
    /// Throws std::invalid_argument, which names the keys that were asked for, if something was not taken.
    void finish() const;

private:
    std::map<std::string, std::string> values_;
    std::set<std::string> known_;
};

} // namespace audlmd::c
