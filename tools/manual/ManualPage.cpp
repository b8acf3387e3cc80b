#include "tools/manual/ManualPage.hpp"

#include "tools/manual/OptionText.hpp"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace audlmd::manual {
namespace {

std::string capitals(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

/// Characters that roff would take for its own.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\')
            result += "\\e";
        else if (c == '-')
            result += "\\-";
        else if (c == '\'')
            result += "\\(aq";
        else if (c == '.' && result.empty())
            result += "\\&.";
        else
            result += c;
    }
    return result;
}

/// Lines that stay as they are, and lines that are filled.
class Body {
public:
    void line(const std::string& text) {
        const bool isIndented = text.starts_with("  ");
        if (isIndented != isExample_)
            text_ += !isIndented ? ".fi\n" : text_.empty() ? ".nf\n" : ".PP\n.nf\n";
        else if (!isExample_ && std::exchange(startsParagraph_, false))
            text_ += ".PP\n";
        isExample_ = isIndented;
        startsParagraph_ = false;
        text_ += (isIndented ? escaped(text.substr(2)) : marked(text)) + "\n";
    }
    void paragraph() {
        if (isExample_)
            text_ += ".fi\n";
        isExample_ = false;
        startsParagraph_ = true;
    }
    std::string taken() {
        paragraph();
        return std::move(text_);
    }

private:
    /// A paragraph of the help begins with its subject in capital letters.
    std::string marked(const std::string& text) const {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string first = text.substr(0, end);
        const bool isSubject = first.size() > 2 && std::ranges::all_of(first, [](unsigned char c) {
                                   return std::isupper(c) != 0;
                               });
        return isSubject ? "\\fB" + first + "\\fR" + escaped(text.substr(end)) : escaped(text);
    }

    std::string text_;
    bool isExample_ = false;
    bool startsParagraph_ = false;
};

/// The text below the options: paragraphs, some of which are sections of their own.
std::string sectionsOf(const std::string& help) {
    std::istringstream lines(help);
    std::string page = ".SH NOTES\n";
    Body body;
    for (std::string line; std::getline(lines, line);) {
        const std::string title = line.substr(0, line.find_last_not_of(": ") + 1);
        if (capitals(title) == "EXAMPLES" || title == "EXIT STATUS") {
            page += body.taken() + ".SH " + capitals(title) + "\n";
            body = {};
        } else if (line.empty()) {
            body.paragraph();
        } else {
            body.line(line);
        }
    }
    page += body.taken();
    // A page whose help has no more than examples needs no notes.
    return page.starts_with(".SH NOTES\n.SH") ? page.substr(10) : page;
}

std::string optionEntry(const OptionText& option) {
    std::string names;
    for (const std::string& name : option.names)
        names += (names.empty() ? "\\fB" : ", \\fB") + escaped(name) + "\\fR";
    const std::string value = option.value.empty() ? "" : " \\fI" + escaped(option.value) + "\\fR";
    return ".TP\n" + names + value + "\n" + escaped(option.description) + "\n";
}

std::string optionSections(const CLI::App& command) {
    std::string text;
    std::string group = "Options";
    for (const OptionText& option : optionsOf(command)) {
        if (option.group != group)
            text += ".SS " + escaped(option.group) + "\n";
        group = option.group;
        text += optionEntry(option);
    }
    return text;
}

std::string synopsis(const CLI::App& command) {
    std::string text = "\\fB" + escaped(nameOf(command, " ")) + "\\fR [\\fIOPTION\\fR]...";
    if (const std::string words = positionalsOf(command); !words.empty())
        text += " \\fI" + escaped(words) + "\\fR";
    return text + (subcommandsOf(command).empty() ? "" : " \\fISUBCOMMAND\\fR ...") + "\n";
}

std::string wordsOf(const CLI::App& command) {
    std::string text;
    for (const CLI::Option* option : command.get_options())
        if (option->get_positional())
            text += ".TP\n\\fI" + escaped(option->get_name(true)) + "\\fR\n" +
                    escaped(option->get_description()) + "\n";
    return text;
}

/// Those of the command have pages of their own; those of a subcommand stand in its page.
std::string subcommandSections(const CLI::App& command) {
    std::string text = subcommandsOf(command).empty() ? "" : ".SH SUBCOMMANDS\n";
    for (const CLI::App* subcommand : subcommandsOf(command)) {
        if (command.get_parent() == nullptr) {
            text += ".TP\n\\fB" + escaped(nameOf(*subcommand, "-")) + "\\fR(1)\n" +
                    escaped(subcommand->get_description()) + "\n";
            continue;
        }
        text += ".SS " + escaped(subcommand->get_name()) + "\n" + synopsis(*subcommand) + ".PP\n" +
                escaped(subcommand->get_description()) + ".\n" + wordsOf(*subcommand) +
                optionSections(*subcommand);
    }
    return text;
}

} // namespace

std::string manualPage(const CLI::App& command, const std::string& version, const std::string& date) {
    const std::string name = nameOf(command, "-");
    std::string page =
        ".TH " + capitals(name) + " 1 " + date + " \"audlmd " + version + "\" \"User Commands\"\n";
    std::string summary = command.get_description();
    if (summary.ends_with('.'))
        summary.pop_back();
    summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
    page +=
        ".SH NAME\n" + escaped(name) + " \\- " + escaped(summary) + "\n.SH SYNOPSIS\n" + synopsis(command);
    if (const std::string words = wordsOf(command); !words.empty())
        page += ".SH DESCRIPTION\n" + words;
    page += subcommandSections(command) + ".SH OPTIONS\n" + optionSections(command) +
            sectionsOf(command.get_footer());
    const bool isWhole = command.get_parent() == nullptr;
    return page + ".SH SEE ALSO\n" + (isWhole ? "" : "\\fBaudlmd\\fR(1),\n") +
           "\\fBaudlmd\\-timeline\\fR(5),\n\\fBaudlmd\\-modes\\fR(7)\n";
}

} // namespace audlmd::manual
