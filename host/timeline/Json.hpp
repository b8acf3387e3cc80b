#pragma once

#include "host/timeline/TimelineError.hpp"
#include "host/timeline/Words.hpp"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace audlmd::timeline {

/// A JSON value of any type, after RFC 8259.
using Json = nlohmann::json;

/// Reads JSON, in a time that grows with its length only. Throws TimelineError, with line and column, for a
/// text that is not JSON, or that is nested more than 512 levels deep.
///
/// Some programs write NaN and infinities, which JSON does not have. Each becomes a text of the same letters:
/// where nobody reads the member, it harms nothing, and who expects a number refuses the text.
Json parseJson(std::string_view text);

/// The member of an object. Null where `value` is no object, where the member is missing and where it is
/// null. Valid as long as `value`. Use this for files of others, where a member of a wrong type is no
/// mistake; use Fields for our own.
const Json* member(const Json& value, const std::string& key);

/// The member as text. `otherwise` where there is no such text. Trap: a member of another type counts as
/// missing.
std::string textIn(const Json& value, const std::string& key, const std::string& otherwise = {});

/// Reads the members of an object, each with its type and limits, and refuses members that nobody asked for.
/// Every TimelineError names the place and the key. Use one reader for each object: read all members, then
/// call finish().
class Fields {
public:
    /// Throws TimelineError unless `object` is an object. The object must outlive the reader.
    Fields(const Json& object, Where where);

    /// Null for a member that is missing or null.
    const Json* find(const std::string& key);
    /// A list, or null where the member is missing. The functions below return `otherwise` for a member that
    /// is missing or null.
    const Json* list(const std::string& key);
    std::string text(const std::string& key, const std::string& otherwise);
    bool flag(const std::string& key, bool otherwise);
    /// Refuses numbers outside `lowest` to `highest`.
    double number(const std::string& key, double otherwise, double lowest, double highest);
    /// Refuses fractions, and numbers outside `lowest` to `highest`; 3.0 counts as a fraction.
    std::int64_t whole(const std::string& key, std::int64_t otherwise, std::int64_t lowest,
                       std::int64_t highest);
    /// A number up to `highest`, or "-inf".
    double decibels(const std::string& key, double otherwise, double highest);

    /// The value that a word stands for, nothing where the member is missing. Refuses other words, and names
    /// those that are known.
    template <class Value, std::size_t count>
    std::optional<Value> word(const std::string& key, const Words<Value, count>& words) {
        const Json* found = find(key);
        if (found == nullptr)
            return std::nullopt;
        std::string known;
        for (const auto& [name, value] : words) {
            if (found->is_string() && found->get_ref<const std::string&>() == name)
                return value;
            known += (known.empty() ? "" : ", ") + std::string(name);
        }
        fail(key, "must be one of " + known);
    }

    /// Throws TimelineError if the object has a member that was not asked for. Call this last. A mistyped key
    /// is found here instead of being ignored.
    void finish() const;

    /// Throws TimelineError: the place, the key in quotes, the sentence.
    [[noreturn]] void fail(const std::string& key, const std::string& sentence) const;
    /// The place for readers of objects inside this one.
    const Where& where() const { return where_; }

private:
    const Json& object_;
    Where where_;
    std::set<std::string, std::less<>> known_;
};

/// A number, or "-inf". Nothing for anything else, and above `highest`.
std::optional<double> decibelsOf(const Json& value, double highest);

} // namespace audlmd::timeline
