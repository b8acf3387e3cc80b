#include "tools/manual/OptionText.hpp"

#include "host/cache/ChannelLayout.hpp"
#include "host/words/StripWords.hpp"
#include "tools/audlmd/files/OutputFormat.hpp"

#include <algorithm>
#include <map>
#include <sstream>

namespace audlmd::manual {
namespace {

template <class Table>
std::vector<std::string> wordsOf(const Table& table) {
    std::vector<std::string> words;
    for (const auto& [word, value] : table)
        words.emplace_back(word);
    return words;
}

std::vector<std::string> formatNames() {
    std::vector<std::string> names;
    for (const command::OutputFormat& format : command::outputFormats)
        names.emplace_back(format.name);
    return names;
}

/// The names of a list such as "mono, stereo or 5.1".
std::vector<std::string> layouts() {
    std::string list = layoutNames();
    std::ranges::replace(list, ',', ' ');
    std::istringstream stream(list);
    std::vector<std::string> names;
    for (std::string name; stream >> name;)
        if (name != "or")
            names.push_back(name);
    return names;
}

/// What options take that take one of a few words, by their long names.
std::vector<std::string> wordsFor(const std::string& option) {
    static const std::map<std::string, std::vector<std::string>> known{
        {"as", {"text", "json"}},
        {"channels", layouts()},
        {"converter", {"best", "filtering", "linear"}},
        {"format", formatNames()},
        {"input-format", formatNames()},
    };
    const auto found = known.find(option);
    return found == known.end() ? std::vector<std::string>() : found->second;
}

Value kindOf(const OptionText& option) {
    if (!option.words.empty())
        return Value::words;
    if (option.value.empty())
        return Value::none;
    if (option.value == "DIR" || option.value == "FOLDER")
        return Value::folder;
    const bool isFile = std::ranges::any_of(std::vector<std::string>{"FILE", "OUTPUT", "EXISTING"},
                                            [&](const auto& word) { return option.value.starts_with(word); });
    return isFile ? Value::file : Value::other;
}

/// What the help writes for the value of an option: "TIME[:CURVE]".
std::string valueOf(const CLI::Option& option) {
    if (option.get_items_expected_max() == 0)
        return "";
    const std::string text =
        option.get_option_text().empty() ? option.get_type_name() : option.get_option_text();
    return text.substr(0, text.find(":{"));
}

} // namespace

std::vector<OptionText> optionsOf(const CLI::App& command) {
    std::vector<OptionText> options;
    for (const std::string& group : command.get_groups())
        for (const CLI::Option* option : command.get_options())
            if (option->get_group() == group && option->nonpositional()) {
                OptionText text{
                    .value = valueOf(*option), .description = option->get_description(), .group = group};
                for (const std::string& name : option->get_snames())
                    text.names.push_back("-" + name);
                for (const std::string& name : option->get_lnames())
                    text.names.push_back("--" + name);
                if (!option->get_lnames().empty())
                    text.words = wordsFor(option->get_lnames().front());
                text.kind = kindOf(text);
                options.push_back(std::move(text));
            }
    return options;
}

std::string positionalsOf(const CLI::App& command) {
    std::string text;
    for (const CLI::Option* option : command.get_options())
        if (option->get_positional()) {
            const std::string name =
                option->get_name(true) + (option->get_items_expected_max() > 1 ? "..." : "");
            text += " " + (option->get_required() ? name : "[" + name + "]");
        }
    return text.empty() ? text : text.substr(1);
}

std::vector<const CLI::App*> subcommandsOf(const CLI::App& command) {
    return command.get_subcommands([](const CLI::App*) { return true; });
}

std::string nameOf(const CLI::App& command, std::string_view separator) {
    const CLI::App* const parent = command.get_parent();
    return parent == nullptr ? command.get_name()
                             : nameOf(*parent, separator) + std::string(separator) + command.get_name();
}

} // namespace audlmd::manual
