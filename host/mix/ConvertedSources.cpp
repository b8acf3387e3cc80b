#include "host/mix/ConvertedSources.hpp"

#include "host/services/SampleRates.hpp"
#include "host/signal/BestConverter.hpp"
#include "host/signal/BlockLoops.hpp"
#include "host/words/Times.hpp"

#include <soxr.h>

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>

namespace audlmd {
namespace {

constexpr std::int64_t usualBlock = 32768;
/// The filters of a speed are designed for each strip, and take a tenth less time for each sample in longer
/// blocks.
constexpr std::int64_t blockOfASpeed = 4 * usualBlock;
/// The blocks of two neighbouring segments of the cache, which are loaded in either order.
constexpr std::int64_t leastKeptBlocks = 5;
/// At one go. Measured: more gain nothing.
constexpr std::int64_t mostBlocks = 4;
/// In samples of the lower rate. Measured: half of it gives the same samples.
constexpr std::int64_t filterReach = 500;

/// Of numbers that are not negative.
std::int64_t dividedUp(std::int64_t dividend, std::int64_t divisor) {
    return dividend / divisor + (dividend % divisor != 0 ? 1 : 0);
}

/// Without the precise clock, libsoxr rounds the step between output samples to 2^-32 input samples where the
/// rates have a long period. Blocks would then drift by up to -108 dB before each new start.
soxr_quality_spec_t quality() {
    return soxr_quality_spec(SOXR_VHQ, SOXR_HI_PREC_CLOCK);
}

std::string ratesText(int inRate, int outRate, const Relabel& relabel) {
    return "from " + std::to_string(inRate) + " Hz" +
           (relabel == Relabel() ? "" : ", relabelled " + words::relabelText(relabel) + ",") + " to " +
           std::to_string(outRate) + " Hz";
}

std::invalid_argument refusal(const std::string& rates, const std::string& reason) {
    return std::invalid_argument("cannot convert " + rates + ": " + reason +
                                 "; convert the file first, for example with sox or ffmpeg");
}

/// Designs the filters once, to learn of an error before the first read. Without AVX, the first resampler
/// builds tables that all share, and libsoxr 0.1.3 does not lock them. So one is built
/// here, under our lock.
void tryRates(std::int64_t inPeriod, std::int64_t outPeriod, const std::string& rates) {
    static Mutex designing;
    const Lock lock(designing);
    soxr_error_t error = nullptr;
    const soxr_quality_spec_t spec = quality();
    soxr_delete(soxr_create(static_cast<double>(inPeriod), static_cast<double>(outPeriod), 1, &error, nullptr,
                            &spec, nullptr));
    if (error != nullptr)
        throw refusal(rates, error);
}

/// No product overflows: rates are ints, and both parts of a Relabel below 2^31.
SpeedRatio periodsOf(int inRate, int outRate, const Relabel& relabel) {
    const std::string rates = ratesText(inRate, outRate, relabel);
    for (const double rate : {double(inRate), relabel.rateOf(inRate), double(outRate)})
        if (!(rate >= lowestSampleRate && rate <= highestSampleRate))
            throw refusal(rates, "both rates must be from " + std::to_string(lowestSampleRate) + " to " +
                                     std::to_string(highestSampleRate) + " Hz");
    const std::int64_t in = inRate * relabel.to;
    const std::int64_t out = outRate * relabel.from;
    const std::int64_t common = std::gcd(in, out);
    if (std::max(in, out) / common > longestRatio)
        throw refusal(rates, "the two have no simple ratio");
    return {in / common, out / common};
}

/// Stretches of input, equally long, as the channels of one resampler.
class SideBySide {
public:
    struct Stretch {
        std::span<const float> input;
        std::span<float> output;
    };

    SideBySide(std::int64_t inPeriod, std::int64_t outPeriod, std::vector<Stretch> stretches,
               const std::string& rates)
        : stretches_(std::move(stretches)), rates_(rates), inputs_(stretches_.size()),
          outputs_(stretches_.size()), leftOut_(stretches_.size() * piece) {
        soxr_error_t error = nullptr;
        const soxr_quality_spec_t spec = quality();
        const soxr_io_spec_t split = soxr_io_spec(SOXR_FLOAT32_S, SOXR_FLOAT32_S);
        resampler_.reset(soxr_create(static_cast<double>(inPeriod), static_cast<double>(outPeriod),
                                     static_cast<unsigned int>(stretches_.size()), &error, &split, &spec,
                                     nullptr));
        require(error == nullptr, error);
    }

    /// Leaves out so many samples first.
    void convert(std::size_t runUp) {
        const std::size_t inCount = stretches_.front().input.size();
        const std::size_t count = runUp + stretches_.front().output.size();
        std::size_t read = 0;
        for (std::size_t done = 0; done < count;) {
            for (std::size_t n = 0; n < stretches_.size(); ++n) {
                inputs_[n] = stretches_[n].input.data() + read;
                outputs_[n] =
                    done < runUp ? leftOut_.data() + n * piece : stretches_[n].output.data() + (done - runUp);
            }
            const std::size_t most = done < runUp ? std::min(piece, runUp - done) : count - done;
            const std::size_t given = std::min(piece, inCount - read);
            std::size_t taken = 0;
            std::size_t made = 0;
            // Null: the input has ended.
            const soxr_error_t error = soxr_process(resampler_.get(), given == 0 ? nullptr : inputs_.data(),
                                                    given, &taken, outputs_.data(), most, &made);
            require(error == nullptr, error);
            require(given != 0 || made != 0, "libsoxr gave too few samples");
            read += taken;
            done += made;
        }
    }

private:
    /// In samples. Small enough for all that libsoxr keeps of a piece to stay in the processor's caches:
    /// blocks at one go take half as much time again.
    static constexpr std::size_t piece = 2048;

    struct Delete {
        void operator()(soxr_t resampler) const { soxr_delete(resampler); }
    };

    void require(bool succeeded, const char* otherwise) const {
        if (!succeeded)
            throw std::runtime_error("the rate conversion " + rates_ + " failed: " + otherwise);
    }

    const std::vector<Stretch> stretches_;
    const std::string& rates_;
    std::unique_ptr<soxr, Delete> resampler_;
    std::vector<const float*> inputs_;
    std::vector<float*> outputs_;
    std::vector<float> leftOut_;
};

} // namespace

RateConvertedSource::RateConvertedSource(std::shared_ptr<SampleSource> source, int inRate, int outRate,
                                         const Relabel& relabel)
    : RateConvertedSource(std::move(source), periodsOf(inRate, outRate, relabel), 0, usualBlock,
                          ratesText(inRate, outRate, relabel)) {}

RateConvertedSource::RateConvertedSource(std::shared_ptr<SampleSource> source, const SpeedRatio& ratio,
                                         std::int64_t lead)
    : RateConvertedSource(std::move(source), ratio, lead, blockOfASpeed,
                          "to " + std::to_string(ratio.source) + "/" + std::to_string(ratio.output) +
                              " times the speed") {}

RateConvertedSource::RateConvertedSource(std::shared_ptr<SampleSource> source, const SpeedRatio& ratio,
                                         std::int64_t lead, std::int64_t block, std::string rates)
    : source_(std::move(source)), rates_(std::move(rates)), lead_(lead), inPeriod_(ratio.source),
      outPeriod_(ratio.output) {
    tryRates(inPeriod_, outPeriod_, rates_);
    // Whole periods apart from the rest: the product of a long length and a period does not fit into 64 bits.
    const std::int64_t length = source_->length() + lead_;
    if (static_cast<double>(length) / static_cast<double>(inPeriod_) * static_cast<double>(outPeriod_) >
        0x1p60)
        throw refusal(rates_, "the result is longer than 2^60 samples");
    length_ = length / inPeriod_ * outPeriod_ + dividedUp(length % inPeriod_ * outPeriod_, inPeriod_);
    periodsPerBlock_ = std::max<std::int64_t>(1, block / outPeriod_);
    margin_ = std::max(filterReach, dividedUp(filterReach * inPeriod_, outPeriod_));
}

void RateConvertedSource::read(std::int64_t position, std::span<float> samples) {
    while (!samples.empty()) {
        const std::shared_ptr<Run> run = runAt(position / blockLength());
        const std::int64_t first = position - run->first * blockLength();
        const auto count =
            std::min(samples.size(), static_cast<std::size_t>(run->blocks * blockLength() - first));
        try {
            const Lock lock(run->mutex);
            if (run->samples.empty())
                run->samples = convert(*run);
            std::copy_n(run->samples.begin() + first, count, samples.begin());
        } catch (...) {
            if (run->blocks == 1)
                throw;
            forget(run);
            continue;
        }
        position += static_cast<std::int64_t>(count);
        samples = samples.subspan(count);
    }
}

/// A new run is still empty. Who uses a run that is dropped meanwhile holds it to the end.
std::shared_ptr<RateConvertedSource::Run> RateConvertedSource::runAt(std::int64_t block) {
    const Lock lock(mutex_);
    const auto found = std::ranges::find_if(kept_, [block](const std::shared_ptr<Run>& run) {
        return run->first <= block && block < run->first + run->blocks;
    });
    std::shared_ptr<Run> run;
    if (found != kept_.end()) {
        run = *found;
        kept_.erase(found);
    } else {
        run = newRun(block);
    }
    kept_.push_back(run);
    // Two long ones reach over the border of any two segments.
    const std::int64_t leastKept = blockLength() > 2 * usualBlock ? 2 : leastKeptBlocks;
    std::int64_t blocks = 0;
    for (const std::shared_ptr<Run>& kept : kept_)
        blocks += kept->blocks;
    for (; blocks - kept_.front()->blocks >= leastKept; kept_.pop_front())
        blocks -= kept_.front()->blocks;
    return run;
}

/// Longer, the further blocks were read straight on, so that a jump leaves few blocks unread. Backwards, the
/// blocks of one segment are still read forwards. Blocks that begin or end otherwise than most stay alone.
std::shared_ptr<RateConvertedSource::Run> RateConvertedSource::newRun(std::int64_t block) const {
    auto run = std::make_shared<Run>();
    std::int64_t first = block;
    std::int64_t end = block + 1;
    for (const std::shared_ptr<Run>& kept : kept_) {
        const std::int64_t most = std::clamp<std::int64_t>(kept->inARow / mostBlocks, 1, mostBlocks);
        if (kept->first + kept->blocks == block) {
            end = block + most;
        } else if (block < kept->first && kept->first < block + mostBlocks) {
            end = kept->first;
            first = std::min(block, end - most);
        } else {
            continue;
        }
        run->inARow = kept->inARow + end - first;
    }
    const bool areAlike = first * periodsPerBlock_ >= dividedUp(margin_, inPeriod_) &&
                          end * blockLength() <= length_ &&
                          (end - first) * blockLength() <= mostBlocks * usualBlock;
    run->first = areAlike ? first : block;
    run->blocks = areAlike ? end - first : 1;
    return run;
}

void RateConvertedSource::forget(const std::shared_ptr<Run>& run) {
    const Lock lock(mutex_);
    std::erase(kept_, run);
    for (const std::shared_ptr<Run>& kept : kept_)
        kept->inARow = 0;
}

/// The blocks are the channels of one resampler, each with its own run-up, so that the filters are designed
/// once. Each gets the bytes that it gets alone.
std::vector<float> RateConvertedSource::convert(const Run& run) const {
    const std::int64_t firstPeriod = run.first * periodsPerBlock_;
    const std::int64_t startPeriod = std::max<std::int64_t>(0, firstPeriod - dividedUp(margin_, inPeriod_));
    const std::int64_t runUp = (firstPeriod - startPeriod) * outPeriod_;
    const std::int64_t count = std::min(blockLength(), length_ - firstPeriod * outPeriod_);
    const std::int64_t inCount = dividedUp((runUp + count) * inPeriod_, outPeriod_) + margin_;
    const std::int64_t inStart = startPeriod * inPeriod_;
    const std::int64_t inStep = periodsPerBlock_ * inPeriod_;
    const std::vector<float> input = readPadded(inStart, inStart + inCount + (run.blocks - 1) * inStep);
    std::vector<float> output(static_cast<std::size_t>(count + (run.blocks - 1) * blockLength()));
    std::vector<SideBySide::Stretch> stretches;
    for (std::int64_t block = 0; block < run.blocks; ++block)
        stretches.push_back(
            {.input = std::span(input).subspan(static_cast<std::size_t>(block * inStep),
                                               static_cast<std::size_t>(inCount)),
             .output = std::span(output).subspan(static_cast<std::size_t>(block * blockLength()),
                                                 static_cast<std::size_t>(count))});
    SideBySide(inPeriod_, outPeriod_, std::move(stretches), rates_).convert(static_cast<std::size_t>(runUp));
    return output;
}

/// The input's samples, counted with the lead, and silence beyond its ends.
std::vector<float> RateConvertedSource::readPadded(std::int64_t from, std::int64_t to) const {
    std::vector<float> samples(static_cast<std::size_t>(to - from));
    const std::int64_t begin = std::max<std::int64_t>(from - lead_, 0);
    const std::int64_t end = std::min(to - lead_, source_->length());
    if (begin < end)
        source_->read(begin, std::span(samples).subspan(static_cast<std::size_t>(begin + lead_ - from),
                                                        static_cast<std::size_t>(end - begin)));
    return samples;
}

std::shared_ptr<SampleSource> convertedTo(std::shared_ptr<SampleSource> source, int inRate, int outRate,
                                          const Relabel& relabel) {
    if (inRate * relabel.to == outRate * relabel.from)
        return source;
    return std::make_shared<RateConvertedSource>(std::move(source), inRate, outRate, relabel);
}

std::shared_ptr<SampleSource> materialAtNormalSpeed(std::shared_ptr<SampleSource> source,
                                                    const StripSettings& strip) {
    if (strip.converter != Converter::best)
        return source;
    const std::int64_t lead = leadOf(strip);
    const SpeedRatio ratio = *ratioOf(strip.speed);
    if (ratio.source == ratio.output)
        return source;
    return std::make_shared<RateConvertedSource>(std::move(source), ratio, lead);
}

void ScaledSource::read(std::int64_t position, std::span<float> samples) {
    source_->read(position, samples);
    multiply(samples, factor_);
}

/// Only over a channel as it is: the product of two factors may be out of range where each alone is not.
SampleSource::InFrames ScaledSource::inFrames() const {
    InFrames scaled = source_->inFrames();
    if (scaled.factor != 1.0F)
        return {};
    scaled.factor = factor_;
    return scaled;
}

} // namespace audlmd
