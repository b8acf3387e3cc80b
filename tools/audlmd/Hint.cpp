#include "tools/audlmd/Hint.hpp"

#include "host/words/Text.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <numeric>
#include <string_view>
#include <vector>

namespace audlmd::command {
namespace {

/// How many letters must be inserted, removed or replaced to make one word of the other (Levenshtein 1966).
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

/// How many letters somebody who wrote `word` may have missed of a candidate: none where it begins so.
std::size_t missed(std::string_view word, std::string_view candidate) {
    return candidate.starts_with(word) ? 0 : distance(word, candidate);
}

/// The subcommand that the line has got to.
const CLI::App& chosenOf(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? app : chosenOf(*chosen.front());
}

std::vector<std::string> optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

std::vector<std::string> subcommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* subcommand : app.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(subcommand->get_name());
    return names;
}

/// Whether the subcommand writes what -o names, and the line has not said where.
bool lacksOutput(const CLI::App& app) {
    const CLI::Option* const output = app.get_option_no_throw("--output");
    return output != nullptr && output->count() == 0;
}

} // namespace

std::string hintFor(const CLI::App& app) {
    const std::vector<std::string> rest = app.remaining(true);
    if (rest.empty())
        return {};
    const CLI::App& chosen = chosenOf(app);
    const std::vector<std::string> subcommands = subcommandNames(chosen);
    const bool isOption = rest.front().starts_with("-");
    // "--gain=3" is the option --gain.
    const std::string word = isOption ? rest.front().substr(0, rest.front().find('=')) : rest.front();
    if (!isOption && subcommands.empty())
        return words::quoted(word) + " is one word too many" +
               (lacksOutput(chosen) ? "; the file to write is named with -o: -o " + word : "");
    const std::string meant = nearest(word, isOption ? optionNames(chosen) : subcommands);
    return words::quoted(word) + (isOption ? " is no option" : " is no subcommand") +
           (meant.empty() ? "" : "; did you mean " + meant + "?");
}

std::string nearest(const std::string& word, const std::vector<std::string>& known) {
    std::string found;
    std::size_t least = word.size() / 3 + 1;
    for (const std::string& candidate : known) {
        const std::size_t letters = missed(word, candidate);
        if (letters < least) {
            least = letters;
            found = candidate;
        }
    }
    return found;
}

void sortByLikeness(std::vector<std::string>& words, std::string_view word) {
    std::ranges::stable_sort(words, {},
                             [&](const std::string& candidate) { return missed(word, candidate); });
}

} // namespace audlmd::command
