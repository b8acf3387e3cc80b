#pragma once

#include <CLI/CLI.hpp>

#include <cmath>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace audlmd::command {

/// Adds an option that holds a value, not its text. When the command line is read, `parse(text, name)` turns
/// the text into the value; a text that `parse` cannot read is a CommandError that names the option. `value`
/// must outlive the app.
///
/// A command line that asks for help gets help, whatever else is wrong on the line: nothing is parsed then.
template <class Value, class Parse>
CLI::Option* addParsed(CLI::App& app, const std::string& name, std::optional<Value>& value, Parse parse,
                       const std::string& description) {
    const auto read = [&app, &value, name, parse](const std::string& text) {
        if (app.get_help_ptr()->count() == 0)
            value = parse(text, name);
    };
    return app.add_option_function<std::string>(name, read, description);
}

/// The same for an option with several values. The values are appended in the order of the command line.
template <class Value, class Parse>
CLI::Option* addParsed(CLI::App& app, const std::string& name, std::vector<Value>& values, Parse parse,
                       const std::string& description) {
    const auto read = [&app, &values, name, parse](const std::vector<std::string>& texts) {
        if (app.get_help_ptr()->count() == 0)
            for (const std::string& text : texts)
                values.push_back(parse(text, name));
    };
    return app.add_option_function<std::vector<std::string>>(name, read, description);
}

/// Refuses numbers outside the range, and NaN, which CLI::Range lets pass.
inline CLI::Validator numberBetween(double least, double most) {
    const auto refuseNaN = [](const std::string& text) {
        return std::isnan(std::strtod(text.c_str(), nullptr)) ? "'" + text + "' is not a number"
                                                              : std::string();
    };
    return CLI::Range(least, most) & CLI::Validator(refuseNaN, "");
}

} // namespace audlmd::command
