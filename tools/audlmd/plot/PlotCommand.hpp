#pragma once

namespace CLI {
class App;
}

namespace audlmd::plot {

/// Adds `plot`: draws gain curves, envelopes, automation, an equaliser's response or a spectrogram.
void addPlotCommand(CLI::App& app);

} // namespace audlmd::plot
