#pragma once

#include <filesystem>

namespace CLI {
class App;
}

namespace audlmd::command {

/// The options of a file of waveform peaks beside an output.
struct PeaksOptions {
    /// A .json or .dat file. Empty: none.
    std::filesystem::path file;
    /// 8 or 16.
    int bits = 8;
    /// As many samples have one lowest and one highest.
    int samplesPerPixel = 256;

    /// Declares the options in the group "Output" of the help. This object must outlive the app.
    void declare(CLI::App& app);

    /// Throws CommandError for a file of another name, and for one without an output.
    void requireCompatible(bool hasOutput) const;

    bool isJson() const { return file.extension() == ".json"; }
};

} // namespace audlmd::command
