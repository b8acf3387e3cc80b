#pragma once

#include <string>

namespace CLI {
class App;
}

namespace audlmd::command {

/// What to do about the words of a command line that CLI11 could not place: "'--fad-in' is no option; did you
/// mean
/// --fade-in?". Empty where all words have a place. Call this after a failed parse.
std::string hintFor(const CLI::App& app);

} // namespace audlmd::command
