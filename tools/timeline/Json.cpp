#include "tools/timeline/Json.hpp"

#include <algorithm>
#include <cctype>

namespace audlmd::timeline {
namespace {

/// Far more levels than nested stacks and tracks need, see deepestNesting.
constexpr int deepest = 512;

/// The letters around a byte of the text. Finds the whole word where the parser has stopped in the middle of
/// one.
std::string_view lettersAround(std::string_view text, std::size_t byte) {
    const auto isLetter = [&](std::size_t i) {
        return std::isalpha(static_cast<unsigned char>(text[i])) != 0;
    };
    std::size_t begin = std::min(byte, text.size());
    while (begin > 0 && isLetter(begin - 1))
        --begin;
    std::size_t end = begin;
    while (end < text.size() && isLetter(end))
        ++end;
    return text.substr(begin, end - begin);
}

/// `byte` is counted from 1, as the parser reports places. Columns are bytes.
std::string lineAndColumn(std::string_view text, std::size_t byte) {
    const std::string_view before = text.substr(0, std::min(byte == 0 ? 0 : byte - 1, text.size()));
    const std::size_t lineStart = before.rfind('\n') + 1; // 0 where there is no line before
    return "line " + std::to_string(std::count(before.begin(), before.end(), '\n') + 1) + ", column " +
           std::to_string(before.size() - lineStart + 1);
}

/// Some programs write numbers that JSON does not have; the message names them, because "not JSON" would not
/// help their users.
[[noreturn]] void refuseText(std::string_view text, std::size_t byte) {
    const std::string place = lineAndColumn(text, byte);
    const std::string_view word = lettersAround(text, byte);
    for (const std::string_view number : {"NaN", "nan", "Infinity", "Inf", "inf", "infinity"})
        if (number == word)
            throw TimelineError(place + ": " + std::string(word) +
                                " is not a number that a timeline can hold");
    if (text.find_first_not_of(" \t\r\n") == std::string_view::npos)
        throw TimelineError("the file is empty");
    throw TimelineError(place + ": this is not JSON");
}

} // namespace

Json parseJson(std::string_view text) {
    const auto limitDepth = [](int depth, Json::parse_event_t, Json&) {
        if (depth > deepest)
            throw TimelineError("the file is nested more than " + std::to_string(deepest) + " levels deep");
        return true;
    };
    try {
        return Json::parse(text.begin(), text.end(), limitDepth);
    } catch (const Json::parse_error& error) {
        refuseText(text, error.byte);
    } catch (const Json::out_of_range&) {
        throw TimelineError("the file holds a number that is too large for any time or level");
    }
}

const Json* member(const Json& value, const std::string& key) {
    if (!value.is_object())
        return nullptr;
    const auto found = value.find(key);
    return found == value.end() || found->is_null() ? nullptr : &*found;
}

std::string textIn(const Json& value, const std::string& key, const std::string& otherwise) {
    const Json* found = member(value, key);
    return found != nullptr && found->is_string() ? found->get<std::string>() : otherwise;
}

std::optional<double> decibelsOf(const Json& value, double highest) {
    if (value.is_string() && value.get_ref<const std::string&>() == "-inf")
        return -std::numeric_limits<double>::infinity();
    if (value.is_number() && value.get<double>() <= highest)
        return value.get<double>();
    return std::nullopt;
}

Fields::Fields(const Json& object, Where where) : object_(object), where_(std::move(where)) {
    if (!object.is_object())
        where_.fail("an object in braces is missing here");
}

const Json* Fields::find(const std::string& key) {
    // Noted even where the member is missing: the key is one that somebody asked for.
    known_.insert(key);
    return member(object_, key);
}

const Json* Fields::list(const std::string& key) {
    const Json* found = find(key);
    if (found != nullptr && !found->is_array())
        fail(key, "must be a list");
    return found;
}

std::string Fields::text(const std::string& key, const std::string& otherwise) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_string())
        fail(key, "must be a text");
    return found->get<std::string>();
}

bool Fields::flag(const std::string& key, bool otherwise) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_boolean())
        fail(key, "must be true or false");
    return found->get<bool>();
}

double Fields::number(const std::string& key, double otherwise, double lowest, double highest) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    if (!found->is_number() || !(found->get<double>() >= lowest && found->get<double>() <= highest))
        fail(key, "must be a number from " + Json(lowest).dump() + " to " + Json(highest).dump());
    return found->get<double>();
}

std::int64_t Fields::whole(const std::string& key, std::int64_t otherwise, std::int64_t lowest,
                           std::int64_t highest) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    // Integers above the signed range are stored without a sign, and would wrap when read with one.
    const bool fits = found->is_number_integer() &&
                      !(found->is_number_unsigned() &&
                        found->get<std::uint64_t>() > std::numeric_limits<std::int64_t>::max()) &&
                      found->get<std::int64_t>() >= lowest && found->get<std::int64_t>() <= highest;
    if (!fits)
        fail(key, "must be a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
    return found->get<std::int64_t>();
}

double Fields::decibels(const std::string& key, double otherwise, double highest) {
    const Json* found = find(key);
    if (found == nullptr)
        return otherwise;
    const std::optional<double> value = decibelsOf(*found, highest);
    if (!value)
        fail(key, "must be decibels up to " + Json(highest).dump() + ", or \"-inf\" for silence");
    return *value;
}

void Fields::finish() const {
    for (const auto& [key, value] : object_.items())
        if (!known_.contains(key))
            fail(key, "is not known here");
}

void Fields::fail(const std::string& key, const std::string& sentence) const {
    where_.fail("\"" + printable(key) + "\" " + sentence);
}

} // namespace audlmd::timeline
