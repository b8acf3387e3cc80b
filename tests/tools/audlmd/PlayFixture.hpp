#pragma once

#include "tests/tools/audlmd/CommandFixture.hpp"
#include "tests/tools/audlmd/SoundListener.hpp"

#include <optional>
#include <string>
#include <vector>

namespace audlmd::test {

/// Runs `audlmd play` where a sound device hands all that it plays to the test: unless a test says otherwise,
/// ALSA's file plugin, at the pace of a sound card.
class PlayFixture : public CommandFixture {
protected:
    PlayFixture();
    /// `alsa` is ALSA's configuration. Whoever plays must write into in("sound/device").
    PlayFixture(const std::string& alsa, bool hasPace);
    ~PlayFixture() override;

    /// What the device has played, interleaved. On a machine that is too busy to load in time the command
    /// says so, and plays once more.
    std::vector<float> heard(const std::string& line);
    /// Renders the sound in a.wav with the options, and expects that a device plays the same samples.
    void expectPlaysWhatRenderWrites(const std::string& options);
    SoundListener& listener() { return *listener_; }

private:
    void listen(const std::string& alsa, bool hasPace);

    std::optional<SoundListener> listener_;
};

/// Whether the sound is a part of what was heard, but for the fade at its start.
bool holds(const std::vector<float>& heard, const std::vector<float>& sound);

} // namespace audlmd::test
