#pragma once

namespace CLI {
class App;
}

namespace audlmd::command {

// Each function adds one subcommand with its options and help. The subcommand runs at the end of
// CLI::App::parse(), and what it throws passes through there: CommandError, the exceptions of the stand-alone
// host and those of the library.

/// All of the command: its name, its version, what its exit statuses mean, and all subcommands.
void declareCommand(CLI::App& app);

/// `render`: renders a sound file through the library into another one.
void addRenderCommand(CLI::App& app);

/// `modes`: lists the mode codes with their chains, or decodes one.
void addModesCommand(CLI::App& app);

/// `info`: tells what sound files are, and how loud.
void addInfoCommand(CLI::App& app);

/// `plot`: draws gain curves, envelopes, automation, the response of an equaliser, or a spectrogram.
void addPlotCommand(CLI::App& app);

/// `mix`: mixes a timeline into a sound file, or lists what sounds when in it.
void addMixCommand(CLI::App& app);

/// `join`: puts sound files one behind the other.
void addJoinCommand(CLI::App& app);

/// `play`: plays a sound file or a timeline on a sound device.
void addPlayCommand(CLI::App& app);

/// `cache`: lists and clears what was decoded of inputs that libsndfile does not read.
void addCacheCommand(CLI::App& app);

/// `selftest`: compares the bytes that this machine renders with those of the release.
void addSelfTestCommand(CLI::App& app);

} // namespace audlmd::command
