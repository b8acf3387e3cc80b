#include "c/Options.hpp"

#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"

#include <stdexcept>
#include <utility>

namespace audlmd::c {
namespace {

/// These are texts whatever they look like: a strip may be called "7".
const std::set<std::string> texts{"name", "silence"};

[[noreturn]] void refuse(const std::string& key, const std::string& value, const std::string& wanted) {
    throw std::invalid_argument("option " + words::quoted(key) + ": " +
                                words::quoted(words::printable(value)) + " is not " + wanted);
}

} // namespace

Options::Options(const char* const* list) {
    while (list != nullptr && *list != nullptr) {
        const std::string key = *list++;
        if (*list == nullptr)
            throw std::invalid_argument("option " + words::quoted(words::printable(key)) + " has no value");
        if (!values_.emplace(key, *list++).second)
            throw std::invalid_argument("option " + words::quoted(words::printable(key)) + " stands twice");
    }
}

std::optional<std::string> Options::take(const std::string& key) {
    known_.insert(key);
    const auto found = values_.extract(key);
    return found ? std::optional(std::move(found.mapped())) : std::nullopt;
}

std::optional<double> Options::takeNumber(const std::string& key) {
    const std::optional<std::string> value = take(key);
    if (!value)
        return std::nullopt;
    const std::optional<double> number = words::numberIn(*value);
    if (!number)
        refuse(key, *value, "a number");
    return number;
}

std::optional<int> Options::takeWhole(const std::string& key, int lowest, int highest) {
    const std::optional<std::string> value = take(key);
    if (!value)
        return std::nullopt;
    const std::optional<int> number = words::wholeIn<int>(*value);
    if (!number || *number < lowest || *number > highest)
        refuse(key, *value,
               "a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
    return number;
}

bool Options::takeFlag(const std::string& key, bool otherwise) {
    const std::optional<std::string> value = take(key);
    if (value && value != "true" && value != "false")
        refuse(key, *value, "true or false");
    return value ? value == "true" : otherwise;
}

nlohmann::json Options::rest() {
    nlohmann::json members = nlohmann::json::object();
    for (const auto& [key, value] : std::exchange(values_, {})) {
        nlohmann::json parsed = nlohmann::json::parse(value, nullptr, false);
        members[key] =
            parsed.is_discarded() || texts.contains(key) ? nlohmann::json(value) : std::move(parsed);
    }
    return members;
}

void Options::finish() const {
    if (values_.empty())
        return;
    std::string names;
    for (const std::string& key : known_)
        names += (names.empty() ? "" : ", ") + key;
    throw std::invalid_argument("there is no option " +
                                words::quoted(words::printable(values_.begin()->first)) + "; there are " +
                                names);
}

} // namespace audlmd::c
