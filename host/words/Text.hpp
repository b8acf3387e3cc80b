#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace audlmd::words {

/// A name or a path for one line of a terminal: what could change the line or its order becomes a question
/// mark, and texts of more than `longest` characters are shortened. These are control characters, separators
/// of lines and paragraphs, marks of the direction of writing, and bytes that are no UTF-8. Use this for
/// every text of a file that goes into a message.
std::string printable(std::string_view text, std::size_t longest = 80);

/// The text for a file that must be UTF-8: each byte that is none becomes U+FFFD.
std::string utf8(std::string_view text);

/// Without blanks at both ends. Carriage returns count as blanks, so that files of other systems read alike.
std::string_view trimmed(std::string_view text);

/// Capital letters of ASCII become small ones, in any locale.
std::string lowered(std::string text);

/// In quotes, for messages.
std::string quoted(std::string_view text);

/// "1 clip", "2 clips": a number and what it counts, whose plural takes an s.
std::string counted(std::uint64_t count, std::string_view thing);

} // namespace audlmd::words
