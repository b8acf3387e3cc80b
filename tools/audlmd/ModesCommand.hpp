#pragma once

namespace CLI {
class App;
}

namespace audlmd::command {

/// Adds `modes`: lists the mode codes with their chains, or decodes one.
void addModesCommand(CLI::App& app);

} // namespace audlmd::command
