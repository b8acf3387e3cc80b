#pragma once

#include "host/mix/Media.hpp"
#include "host/mix/MixReport.hpp"
#include "host/mix/Timeline.hpp"
#include "host/services/RenderFunctions.hpp"
#include "host/signal/Unclipped.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace audlmd {

/// How a mixer works. Nothing here changes a sample, except `wait`.
struct MixerOptions {
    /// The most threads that render at the same time. 0: as many as there are processors.
    std::size_t threads = 0;
    /// In output samples: 1 to 65536. Rendering takes memory for one block of every strip that sounds.
    std::size_t block = 4096;
    /// How long before it sounds a strip is opened, in seconds of output.
    double openAhead = 3.0;
    /// Waits for strips and samples that are not there yet. Without waiting they are silent, and counted in
    /// the report. Set this for files; clear this where a late sample is worse than a missing one.
    bool wait = true;
    /// Also gives each track by itself: see Mixer::render().
    bool stems = false;
    /// Finds the render functions that are compiled into the program: &inlinedRenderFunction of
    /// host/inlined/. Null: those of the loaded library are used, which takes more time.
    RenderFunctionLookUp<Unclipped> inlined = nullptr;
    /// The memory for samples of material, in bytes. Not set: enough for the strips that sound at one time,
    /// at most 256 MiB.
    std::optional<std::size_t> memoryBudget = std::nullopt;
};

/// Mixes a timeline: renders the strips by the library, and sums them.
///
/// The sum is a float without limits. Each strip is rendered with headroom: its material is scaled by
/// 2^-20 and the strip by 2^20, so that 120 dB above full scale are not clipped inside. Powers of two change
/// no bit of a sample, down to 2^-106 of full scale. Who stores the sum clips it, once.
///
/// The strips of an output sample are summed in single precision, from +0.0 on: those of each track in their
/// order, then the tracks in theirs. So a mix is the sum of its stems, bit for bit. Another order of tracks
/// may change the last bit of a sum; everything else gives the same bytes for any stretches, blocks and
/// threads. A strip with the equaliser or the filtering converter carries state from sample to
/// sample: rendered from its middle, the strip is played silently up to there first. So a stretch has the
/// bytes that a render of the whole has there.
///
/// Strips that lie outside a stretch cost nothing. Strips are opened and closed by a thread of the mixer.
/// Memory grows with the number of strips that sound at one time.
///
/// Use a mixer from one thread at a time. The render functions must be compiled in, or registered by a loaded
/// library.
/// \snippet timeline.cpp mixer
class Mixer {
public:
    /// Opens nothing yet. Throws std::invalid_argument, naming track and strip, for a strip that cannot be
    /// rendered: what StripPlan refuses, a gain above +60 dB, or times out of range; and for a layout or a
    /// fold-down that does not fit the timeline's channels.
    Mixer(Timeline timeline, OpenMedia open, const MixerOptions& options = {});
    ~Mixer();
    Mixer(const Mixer&) = delete;
    Mixer& operator=(const Mixer&) = delete;

    /// As it was given.
    const Timeline& timeline() const;

    /// Renders the output from `position` on, which may lie anywhere: a buffer for each channel of
    /// outputLayout(), all of one length. Beyond the strips, and before 0, is silence. With
    /// MixerOptions::stems the buffers for the channels of each track, in order, stand behind those.
    ///
    /// To go on where the last stretch ended is cheapest. Throws NoSuchMode if a mode has no render function,
    /// and std::invalid_argument, before anything is written, for a position beyond farthestPosition, for
    /// another number of buffers than there are channels, and for buffers of different lengths. What
    /// fails in a strip makes that strip silent and is reported.
    void render(TimelineSample position, std::span<const std::span<float>> channels);

    /// Ends waiting, for whoever wants to destroy the mixer or no longer needs what it renders: a call of
    /// render() that waits, on another thread, goes on in silence as soon as the read that has begun ends,
    /// and so do all later ones. May be called from any thread.
    void callOff();

    /// What went wrong so far.
    MixReport report() const;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace audlmd
