#pragma once

#include "host/cache/SampleSource.hpp"
#include "host/mix/Relabel.hpp"
#include "host/services/Threads.hpp"
#include "host/signal/Speed.hpp"
#include "host/signal/StripSettings.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace audlmd {

/// Rate conversion: a source at another sample rate than its input's, converted by libsoxr at very high
/// quality while the cache loads it. Use it for material whose rate differs from the output's.
///
/// Output sample n stands for the input time n x inRate / outRate exactly, with a linear phase and no delay.
/// Levels keep to 0.01 dB up to 91 % of half the lower rate, and tones to -100 dB of themselves up to 52 to
/// 91 %, depending on the ratio (docs/sound.md); above half the lower rate nothing is left.
///
/// The output is cut into fixed blocks. Each block starts where a sample of the input and a sample of the
/// output fall on the same time, and is converted afresh from the input samples that its filters reach. So
/// the bytes of a read depend on its position only: reading forwards, backwards or at random gives the same
/// samples. The blocks used last are kept, five or a few more, each of about 32,768 samples or of one period
/// of the two rates; of a speed two, four times as long. Who reads straight on, forwards or backwards, has up
/// to four blocks converted at one go.
///
/// Thread safe. The cache converts channels of one exclusive resource, such as a file, one after another. A
/// NaN or an infinity in the input spoils up to a block. libsoxr runs other code on processors without
/// AVX; no bit was seen to differ.
/// \snippet timeline.cpp relabel
class RateConvertedSource final : public SampleSource {
public:
    /// Rates are in hertz; the input is taken at `relabel.rateOf(inRate)`. Throws std::invalid_argument, with
    /// a sentence that names both rates, unless each is from 1,000 to 768,000 Hz, and where the two fall on
    /// the same time only after more than 2^23 samples.
    RateConvertedSource(std::shared_ptr<SampleSource> source, int inRate, int outRate,
                        const Relabel& relabel = {});

    /// The same for a speed, of which the numbers are up to longestRatio, and so many samples of silence
    /// before the input.
    RateConvertedSource(std::shared_ptr<SampleSource> source, const SpeedRatio& ratio, std::int64_t lead);

    /// The length of the input x outRate / inRate, rounded up. Exact, as inRate is a fraction.
    std::int64_t length() const override { return length_; }

    /// What the input's read throws is passed on; the next read tries again. Input beyond either end is
    /// silence.
    void read(std::int64_t position, std::span<float> samples) override;

    const void* exclusiveResource() const override { return source_->exclusiveResource(); }

private:
    /// Neighbouring blocks that are converted at one go.
    struct Run {
        std::int64_t first = 0;
        std::int64_t blocks = 1;
        /// How many blocks were read straight on, this run included.
        std::int64_t inARow = 1;
        /// Held while the run is converted: whoever needs the same blocks waits.
        Mutex mutex;
        std::vector<float> samples AUDLMD_GUARDED_BY(mutex);
    };

    RateConvertedSource(std::shared_ptr<SampleSource> source, const SpeedRatio& ratio, std::int64_t lead,
                        std::int64_t block, std::string rates);

    std::int64_t blockLength() const { return periodsPerBlock_ * outPeriod_; }
    std::shared_ptr<Run> runAt(std::int64_t block);
    std::shared_ptr<Run> newRun(std::int64_t block) const AUDLMD_REQUIRES(mutex_);
    /// After a failure: the blocks are wanted one by one.
    void forget(const std::shared_ptr<Run>& run);
    std::vector<float> convert(const Run& run) const;
    std::vector<float> readPadded(std::int64_t from, std::int64_t to) const;

    std::shared_ptr<SampleSource> source_;
    /// For messages.
    std::string rates_;
    std::int64_t lead_;
    /// The two rates without their common factor: so many input and output samples last the same time.
    std::int64_t inPeriod_;
    std::int64_t outPeriod_;
    std::int64_t length_;
    std::int64_t periodsPerBlock_;
    /// How far before and behind a block its filters reach, in input samples.
    std::int64_t margin_;

    Mutex mutex_;
    /// The one used last comes last.
    std::deque<std::shared_ptr<Run>> kept_ AUDLMD_GUARDED_BY(mutex_);
};

/// The source at another rate: the source itself where the rates are equal, else a RateConvertedSource.
/// \snippet timeline.cpp converted
std::shared_ptr<SampleSource> convertedTo(std::shared_ptr<SampleSource> source, int inRate, int outRate,
                                          const Relabel& relabel = {});

/// The material of a strip with the converter `best`, as atNormalSpeed() plays it. With another converter the
/// source itself. Throws what that throws.
std::shared_ptr<SampleSource> materialAtNormalSpeed(std::shared_ptr<SampleSource> source,
                                                    const StripSettings& strip);

/// The material is scaled down by this power of two before it reaches the library, whose float output clips
/// at full scale. 120 dB are more than the levels and five bands add, and leave 24-bit samples far from the
/// smallest floats.
inline constexpr int headroomExponent = 20;

/// A source times a power of two. Use it for headroom: scaled down by 2^-n and up again by 2^n, a sample
/// keeps all its bits. Only samples that become smaller than 1.2e-38 lose some.
/// \snippet timeline.cpp converted
class ScaledSource final : public SampleSource {
public:
    /// Multiplies by 2^exponent, from -126 to 127.
    ScaledSource(std::shared_ptr<SampleSource> source, int exponent)
        : source_(std::move(source)), factor_(std::ldexp(1.0F, exponent)) {}

    std::int64_t length() const override { return source_->length(); }
    void read(std::int64_t position, std::span<float> samples) override;
    const void* exclusiveResource() const override { return source_->exclusiveResource(); }
    InFrames inFrames() const override;

private:
    std::shared_ptr<SampleSource> source_;
    float factor_;
};

} // namespace audlmd
