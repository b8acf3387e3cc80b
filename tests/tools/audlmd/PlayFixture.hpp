#pragma once

#include "tests/tools/audlmd/CommandFixture.hpp"
#include "tests/tools/audlmd/SoundListener.hpp"

#include <optional>
#include <string>
#include <vector>

namespace audlmd::test {

/// Runs `audlmd play` where the sound device is ALSA's file plugin, which hands all that it plays to the test
/// at the pace of a sound card.
class PlayFixture : public CommandFixture {
protected:
    PlayFixture();
    ~PlayFixture() override;

    /// What the device has played, interleaved. On a machine that is too busy to load in time the command
    /// says so, and plays once more: one late run in a test, because more are a fault.
    std::vector<float> heard(const std::string& line);
    /// Renders the sound in a.wav with the options, and expects that a device plays the same samples,
    /// clipped.
    void expectPlaysWhatRenderWrites(const std::string& options);

private:
    std::optional<SoundListener> listener_;
    int lateRuns_ = 0;
};

/// Whether the sound is what was heard between silence, but for the fades at both ends.
bool holds(const std::vector<float>& heard, const std::vector<float>& sound);

} // namespace audlmd::test
