#pragma once

namespace CLI {
class App;
}

namespace audlmd::command {

/// Adds `render`: renders a sound file through the library into another one.
void addRenderCommand(CLI::App& app);

} // namespace audlmd::command
