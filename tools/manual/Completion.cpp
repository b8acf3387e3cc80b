#include "tools/manual/Completion.hpp"

#include "tools/manual/OptionText.hpp"

#include <algorithm>
#include <string_view>
#include <vector>

namespace audlmd::manual {
namespace {

std::string joined(const std::vector<std::string>& words, std::string_view separator = " ") {
    std::string text;
    for (const std::string& word : words)
        text += (text.empty() ? "" : std::string(separator)) + word;
    return text;
}

/// With a backslash in front of each of these characters.
std::string guarded(const std::string& text, std::string_view characters) {
    std::string result;
    for (const char c : text)
        result += (characters.find(c) != std::string_view::npos ? "\\" : "") + std::string(1, c);
    return result;
}

/// In single quotes, as shells read them.
std::string inQuotes(const std::string& text) {
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::vector<std::string> namesOf(const std::vector<const CLI::App*>& commands) {
    std::vector<std::string> names;
    for (const CLI::App* command : commands)
        names.push_back(command->get_name());
    return names;
}

/// The command and everything below it, with the words that lead there: "plot curves".
std::vector<std::pair<std::string, const CLI::App*>> placesOf(const CLI::App& command,
                                                              const std::string& words = "") {
    std::vector<std::pair<std::string, const CLI::App*>> places{{words, &command}};
    for (const CLI::App* subcommand : subcommandsOf(command))
        for (auto& place : placesOf(*subcommand, words + (words.empty() ? "" : " ") + subcommand->get_name()))
            places.push_back(std::move(place));
    return places;
}

/// What bash does behind an option.
std::string bashValues(const OptionText& option) {
    switch (option.kind) {
    case Value::words:
        return "COMPREPLY=($(compgen -W " + inQuotes(joined(option.words)) + " -- \"$cur\"))";
    case Value::folder:
        return "COMPREPLY=($(compgen -d -- \"$cur\"))";
    case Value::file:
        return "COMPREPLY=($(compgen -f -- \"$cur\"))";
    default:
        return ":";
    }
}

std::string bashCase(const std::string& words, const CLI::App& command) {
    std::vector<std::string> names = namesOf(subcommandsOf(command));
    const bool takesFiles = names.empty();
    std::string values;
    for (const OptionText& option : optionsOf(command)) {
        names.insert(names.end(), option.names.begin(), option.names.end());
        if (option.kind != Value::none)
            values += "        " + joined(option.names, "|") + ") " + bashValues(option) + "; return ;;\n";
    }
    return "    " + inQuotes(words) + ")\n" +
           (values.empty() ? "" : "        case \"$prev\" in\n" + values + "        esac\n") +
           "        words=" + inQuotes(joined(names)) + (takesFiles ? " files=yes" : "") + " ;;\n";
}

std::string zshOption(const OptionText& option) {
    const std::string description = guarded(option.description, "[]:\\");
    std::string value;
    if (option.kind != Value::none)
        value = ":" + guarded(option.value, "[]:\\") + ":";
    if (option.kind == Value::file)
        value += "_files";
    if (option.kind == Value::folder)
        value += "_files -/";
    if (option.kind == Value::words)
        value += "(" + joined(option.words) + ")";
    std::string lines;
    for (const std::string& name : option.names)
        lines += " \\\n            " + inQuotes("*" + name + "[" + description + "]" + value);
    return lines;
}

/// The function of a command and of all below it.
std::string zshFunction(const CLI::App& command) {
    const std::vector<const CLI::App*> subcommands = subcommandsOf(command);
    std::string options;
    for (const OptionText& option : optionsOf(command))
        options += zshOption(option);
    std::string text = "_" + nameOf(command, "_") + "() {\n";
    if (subcommands.empty())
        return text + "    _arguments -s" + options + " \\\n            '*:file:_files'\n}\n\n";
    text += "    local state line\n    _arguments -C" + options +
            " \\\n            '1:subcommand:->subcommand' \\\n" +
            "            '*::word:->words'\n    case $state in\n    subcommand)\n        local -a "
            "subcommands=(\n";
    for (const CLI::App* subcommand : subcommands)
        text += "            " +
                inQuotes(subcommand->get_name() + ":" + guarded(subcommand->get_description(), ":\\")) + "\n";
    text += "        )\n        _describe subcommand subcommands ;;\n    words)\n        case $line[1] in\n";
    for (const CLI::App* subcommand : subcommands)
        text += "        " + subcommand->get_name() + ") _" + nameOf(*subcommand, "_") + " ;;\n";
    text += "        esac ;;\n    esac\n}\n\n";
    for (const CLI::App* subcommand : subcommands)
        text += zshFunction(*subcommand);
    return text;
}

std::string fishOption(const std::string& condition, const OptionText& option) {
    std::string line = "complete -c audlmd" + condition;
    for (const std::string& name : option.names)
        line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    switch (option.kind) {
    case Value::none:
        break;
    case Value::file:
        line += " -r -F";
        break;
    case Value::folder:
        line += " -x -a '(__fish_complete_directories)'";
        break;
    case Value::words:
        line += " -x -a " + inQuotes(joined(option.words));
        break;
    case Value::other:
        line += " -x";
        break;
    }
    return line + " -d " + inQuotes(guarded(option.description, "\\")) + "\n";
}

} // namespace

std::string bashCompletion(const CLI::App& command) {
    std::string cases;
    for (const auto& [words, place] : placesOf(command))
        cases += bashCase(words, *place);
    return "# bash completion of audlmd\n"
           "_audlmd() {\n"
           "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD - 1]} place= word words= "
           "files=\n"
           "    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           "        case \" " +
           joined(namesOf(subcommandsOf(command))) +
           " \" in *\" $word \"*) [ -n \"$place\" ] || place=$word ;; esac\n"
           "        [ \"$place\" != plot ] || case \" " +
           joined(namesOf(subcommandsOf(*command.get_subcommand("plot")))) +
           " \" in *\" $word \"*) place=\"plot $word\" ;; esac\n"
           "    done\n"
           "    COMPREPLY=()\n"
           "    case \"$place\" in\n" +
           cases +
           "    esac\n"
           "    if [[ $cur != -* && -n $files ]]; then\n"
           "        COMPREPLY=($(compgen -f -- \"$cur\"))\n"
           "    else\n"
           "        COMPREPLY=($(compgen -W \"$words\" -- \"$cur\"))\n"
           "    fi\n"
           "}\n"
           "complete -o filenames -F _audlmd audlmd\n";
}

std::string zshCompletion(const CLI::App& command) {
    return "#compdef audlmd\n\n" + zshFunction(command) + "_audlmd \"$@\"\n";
}

std::string fishCompletion(const CLI::App& command) {
    std::string text = "# fish completion of audlmd\n";
    for (const auto& [words, place] : placesOf(command)) {
        std::string condition;
        for (std::string_view rest = words; !rest.empty();) {
            const std::size_t end = std::min(rest.find(' '), rest.size());
            condition += (condition.empty() ? "" : "; and ") +
                         ("__fish_seen_subcommand_from " + std::string(rest.substr(0, end)));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        const std::string names = joined(namesOf(subcommandsOf(*place)));
        if (!names.empty()) {
            const std::string unless =
                (condition.empty() ? "" : condition + "; and ") + "not __fish_seen_subcommand_from " + names;
            for (const CLI::App* subcommand : subcommandsOf(*place))
                text += "complete -c audlmd -n " + inQuotes(unless) + " -f -a " + subcommand->get_name() +
                        " -d " + inQuotes(subcommand->get_description()) + "\n";
        }
        for (const OptionText& option : optionsOf(*place))
            text += fishOption(condition.empty() ? " -n __fish_use_subcommand" : " -n " + inQuotes(condition),
                               option);
    }
    return text;
}

} // namespace audlmd::manual
