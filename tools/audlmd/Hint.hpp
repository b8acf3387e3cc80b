#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace audlmd::command {

/// What to do about the words of a command line that CLI11 could not place, such as "'--fad-in' is no option;
/// did you mean --fade-in?". Empty where all words have a place. Call this after a failed parse.
std::string hintFor(const CLI::App& app);

/// The word of the list that somebody who wrote `word` may have meant: one that begins so, else one that
/// differs by a letter in three at most. Empty where there is none.
std::string nearest(const std::string& word, const std::vector<std::string>& known);

/// Puts words first that somebody who wrote `word` may have meant.
void sortByLikeness(std::vector<std::string>& words, std::string_view word);

} // namespace audlmd::command
