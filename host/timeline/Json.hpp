#pragma once

#include <nlohmann/json.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace audlmd::timeline {

/// A JSON value of any type, after RFC 8259.
using Json = nlohmann::json;

/// Where the brace or the bracket stands with which a JSON text begins, behind blanks and a mark of the byte
/// order. npos for any other text.
std::size_t startOfJson(std::string_view text);

/// Reads JSON, in a time that grows with its length only. Throws TimelineError, with line and column, for a
/// text that is not JSON, or that is nested more than 512 levels deep.
///
/// Some programs write NaN and infinities, which JSON does not have. Each becomes a text of the same letters:
/// where nobody reads the member, it harms nothing, and who expects a number refuses the text.
Json parseJson(std::string_view text);

/// The member of an object. Null where `value` is no object, where the member is missing and where it is
/// null. Valid as long as `value`. Use this for files of others, where a member of a wrong type is no
/// mistake; use StrictObject for our own.
const Json* member(const Json& value, const std::string& key);

/// The member as text. `otherwise` where there is no such text. Trap: a member of another type counts as
/// missing.
std::string textIn(const Json& value, const std::string& key, const std::string& otherwise = {});

/// A number, or "-inf". Nothing for anything else, and above `highest`.
std::optional<double> decibelsOf(const Json& value, double highest);

} // namespace audlmd::timeline
