#pragma once

#include "host/mix/Mixer.hpp"
#include "host/mix/Reporting.hpp"
#include "host/play/LiveVoice.hpp"
#include "host/services/Threads.hpp"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace audlmd {

/// The part of a timeline from an output sample on: a strip that sounds there starts there, with its fades
/// and automation as they were. Strips keep their places in the timeline; those that are over last for no
/// time.
Timeline cutAt(Timeline timeline, TimelineSample sample);

/// Plays a timeline by a mixer that does not wait, so that one slow disk silences the strips that lie on the
/// disk and no others, and each late strip is named in the report.
///
/// Such a mixer needs time to open files and load samples. So a voice starts on another voice that has all
/// samples, and the mixer takes over about a second later, made ready meanwhile on a thread of its own. The
/// bytes are the same on both sides, because the mixer takes over where no strip sounds that carries state:
/// an equaliser or the filtering converter. A timeline without such a place stays on the other voice.
///
/// Use from one thread at a time, but for what this object does on its own thread.
class LiveMix {
public:
    /// The options must ask not to wait.
    LiveMix(Timeline timeline, OpenMedia open, const MixerOptions& options);
    ~LiveMix();
    LiveMix(const LiveMix&) = delete;
    LiveMix& operator=(const LiveMix&) = delete;

    /// Where a mixer can take over: `sample`, or later. Nothing if that is a long time away.
    std::optional<TimelineSample> placeFrom(TimelineSample sample) const;

    /// Plays on where `first` stands, at speed 1. This object must outlive the voice.
    std::unique_ptr<LiveVoice> play(std::unique_ptr<LiveVoice> first);

    /// Of all that mixers have rendered so far.
    std::vector<StripReport> report() const;
    /// The underruns of all strips together, up to a part of a second ago.
    std::uint64_t lateSamples() const { return lateSamples_; }
    std::uint64_t lateEpisodes() const { return lateEpisodes_; }

private:
    class Voice;
    /// A mixer with its files open, ready to take over at `place`. It has rendered the silent sample before
    /// that.
    struct Ready {
        TimelineSample place;
        std::unique_ptr<Mixer> mixer;
    };

    /// Has a mixer made ready. Drops a request, and a mixer, from before.
    void prepare(TimelineSample place);
    /// Takes the mixer for a place, or null if there is none yet.
    std::unique_ptr<Mixer> take(TimelineSample place);
    /// Keeps the mixer's report. Hands the mixer to this object's thread, because destroying it waits for
    /// reads.
    void retire(std::unique_ptr<Mixer> mixer);
    /// Brings lateSamples() and lateEpisodes() up to date.
    void countLate();
    std::unique_ptr<Mixer> make(TimelineSample place) const;
    void serve(const std::stop_token& stop);

    TimelineSample end() const { return TimelineSample() + timeline_.length; }

    const Timeline timeline_;
    const OpenMedia open_;
    const MixerOptions options_;
    // From here to the mutex: the voice's and the reporter's, who take turns. A player holds a mutex of its
    // own while either of them runs. This object's thread touches none of these.
    StripReports reports_;
    /// The one that plays.
    const Mixer* playing_ = nullptr;
    std::uint64_t lateSamples_ = 0;
    std::uint64_t lateEpisodes_ = 0;

    Mutex mutex_;
    std::condition_variable_any requested_;
    std::optional<TimelineSample> wanted_ AUDLMD_GUARDED_BY(mutex_);
    std::optional<Ready> ready_ AUDLMD_GUARDED_BY(mutex_);
    std::vector<std::unique_ptr<Mixer>> retired_ AUDLMD_GUARDED_BY(mutex_);
    /// Declared last: the thread ends before anything that it uses.
    std::jthread thread_;
};

} // namespace audlmd
