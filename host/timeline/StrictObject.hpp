#pragma once

#include "host/timeline/Json.hpp"
#include "host/timeline/Reading.hpp"
#include "host/words/StripWords.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace audlmd::timeline {

/// An object of our own JSON: gives its members, each with its type and limits, and refuses members that
/// nobody asked for. Every TimelineError names track, clip and key. Use one for each object: read all
/// members, then call finish().
class StrictObject {
public:
    /// Throws TimelineError unless `object` is an object. The object must outlive this one.
    StrictObject(const Json& object, const Reading& reading);

    /// Null for a member that is missing or null.
    const Json* find(const std::string& key);
    /// A list, or null where the member is missing. The functions below return `otherwise` for a member that
    /// is missing or null.
    const Json* list(const std::string& key);
    std::string text(const std::string& key, const std::string& otherwise);
    bool flag(const std::string& key, bool otherwise);
    /// Refuses numbers outside `lowest` to `highest`.
    double number(const std::string& key, double otherwise, double lowest, double highest);
    /// Refuses fractions, and numbers outside `lowest` to `highest`; 3.0 counts as a fraction. Trap: a number
    /// above the signed range counts as a negative one.
    std::int64_t whole(const std::string& key, std::int64_t otherwise, std::int64_t lowest,
                       std::int64_t highest);
    /// A number up to `highest`, or "-inf".
    double decibels(const std::string& key, double otherwise, double highest);

    /// The value that a word stands for, nothing where the member is missing. Refuses other words, and names
    /// those that are known.
    template <class Value, std::size_t count>
    std::optional<Value> word(const std::string& key, const words::Words<Value, count>& known) {
        const Json* found = find(key);
        if (found == nullptr)
            return std::nullopt;
        std::string names;
        for (const auto& [name, value] : known) {
            if (found->is_string() && found->get_ref<const std::string&>() == name)
                return value;
            names += (names.empty() ? "" : ", ") + std::string(name);
        }
        fail(key, "must be one of " + names);
    }

    /// Throws TimelineError if the object has a member that was not asked for. Call this last. A mistyped key
    /// is found here instead of being ignored.
    void finish() const;

    /// Throws TimelineError: track and clip, the key in quotes, the sentence.
    [[noreturn]] void fail(const std::string& key, const std::string& sentence) const;
    /// For objects inside this one.
    const Reading& reading() const { return reading_; }

private:
    const Json& object_;
    Reading reading_;
    std::set<std::string, std::less<>> known_;
};

/// The list "equaliser": at most five bands, each an object {"kind", "frequency", "gain", "q"} or a text as
/// on the command line, see words::bandIn(). The number of bands and their limits are checked by
/// requireBands(), once the sample rate is known.
std::vector<EqualiserBand> equaliserIn(StrictObject& fields);

/// "relabel", see words::relabelIn(). The rate of the file where there is none.
Relabel relabelIn(StrictObject& fields);

/// Nothing where there is no "routing". Throws unless there is a row for each of the output's channels, and
/// all rows are equally long. Gains are linear, with a magnitude of at most 1e6.
std::optional<Routing> routingIn(StrictObject& fields);

} // namespace audlmd::timeline
