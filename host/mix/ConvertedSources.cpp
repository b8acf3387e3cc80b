#include "host/mix/ConvertedSources.hpp"

#include "host/services/SampleRates.hpp"
#include "host/signal/BlockLoops.hpp"
#include "host/words/Times.hpp"

#include <soxr.h>

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>

namespace audlmd {
namespace {

constexpr std::int64_t blockLength = 32768;
/// The blocks of two neighbouring segments of the cache, which are loaded in either order.
constexpr std::size_t mostKeptBlocks = 5;
/// In samples of the lower rate. Measured: half of it gives the same samples.
constexpr std::int64_t filterReach = 500;
/// In samples of either rate: a block is a period at least.
constexpr std::int64_t longestPeriod = std::int64_t{1} << 22;

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

/// So many samples of the input last as long as so many of the output. No product overflows: rates are ints,
/// and both parts of a Relabel below 2^31.
std::pair<std::int64_t, std::int64_t> periodsOf(int inRate, int outRate, const Relabel& relabel) {
    const std::int64_t in = inRate * relabel.to;
    const std::int64_t out = outRate * relabel.from;
    const std::int64_t common = std::gcd(in, out);
    return {in / common, out / common};
}

} // namespace

RateConvertedSource::RateConvertedSource(std::shared_ptr<SampleSource> source, int inRate, int outRate,
                                         const Relabel& relabel)
    : source_(std::move(source)), rates_(ratesText(inRate, outRate, relabel)) {
    for (const double rate : {double(inRate), relabel.rateOf(inRate), double(outRate)})
        if (!(rate >= lowestSampleRate && rate <= highestSampleRate))
            throw refusal(rates_, "both rates must be from " + std::to_string(lowestSampleRate) + " to " +
                                      std::to_string(highestSampleRate) + " Hz");
    std::tie(inPeriod_, outPeriod_) = periodsOf(inRate, outRate, relabel);
    if (std::max(inPeriod_, outPeriod_) > longestPeriod)
        throw refusal(rates_, "the two have no simple ratio");
    tryRates(inPeriod_, outPeriod_, rates_);
    // Whole periods apart from the rest: the product of a long length and a period does not fit into 64 bits.
    const std::int64_t length = source_->length();
    if (static_cast<double>(length) / static_cast<double>(inPeriod_) * static_cast<double>(outPeriod_) >
        0x1p60)
        throw refusal(rates_, "the result is longer than 2^60 samples");
    length_ = length / inPeriod_ * outPeriod_ + dividedUp(length % inPeriod_ * outPeriod_, inPeriod_);
    periodsPerBlock_ = std::max<std::int64_t>(1, blockLength / outPeriod_);
    margin_ = std::max(filterReach, dividedUp(filterReach * inPeriod_, outPeriod_));
}

void RateConvertedSource::read(std::int64_t position, std::span<float> samples) {
    const std::int64_t perBlock = periodsPerBlock_ * outPeriod_;
    while (!samples.empty()) {
        const std::int64_t first = position % perBlock;
        const auto count = std::min(samples.size(), static_cast<std::size_t>(perBlock - first));
        const std::shared_ptr<Block> block = blockAt(position / perBlock);
        {
            const Lock lock(block->mutex);
            if (block->samples.empty())
                block->samples = convert(block->index);
            std::copy_n(block->samples.begin() + first, count, samples.begin());
        }
        position += static_cast<std::int64_t>(count);
        samples = samples.subspan(count);
    }
}

/// A new block is still empty. Who uses a block that is dropped meanwhile holds it to the end.
std::shared_ptr<RateConvertedSource::Block> RateConvertedSource::blockAt(std::int64_t index) {
    const Lock lock(mutex_);
    const auto found = std::find_if(kept_.begin(), kept_.end(),
                                    [index](const auto& block) { return block->index == index; });
    std::shared_ptr<Block> block;
    if (found != kept_.end()) {
        block = *found;
        kept_.erase(found);
    } else {
        block = std::make_shared<Block>();
        block->index = index;
        if (kept_.size() == mostKeptBlocks)
            kept_.pop_front();
    }
    kept_.push_back(block);
    return block;
}

std::vector<float> RateConvertedSource::convert(std::int64_t index) const {
    const std::int64_t firstPeriod = index * periodsPerBlock_;
    const std::int64_t startPeriod = std::max<std::int64_t>(0, firstPeriod - dividedUp(margin_, inPeriod_));
    const std::int64_t runUp = (firstPeriod - startPeriod) * outPeriod_;
    const std::int64_t count = std::min(periodsPerBlock_ * outPeriod_, length_ - firstPeriod * outPeriod_);
    const std::int64_t inCount = dividedUp((runUp + count) * inPeriod_, outPeriod_) + margin_;
    const std::int64_t inStart = startPeriod * inPeriod_;

    const std::vector<float> input = readPadded(inStart, inStart + inCount);
    std::vector<float> output(static_cast<std::size_t>(runUp + count));
    std::size_t done = 0;
    const soxr_quality_spec_t spec = quality();
    // Null on purpose: asked for the count of input samples, soxr_oneshot stops before the end of the input.
    std::size_t* const inputDone = nullptr;
    const soxr_error_t error =
        soxr_oneshot(static_cast<double>(inPeriod_), static_cast<double>(outPeriod_), 1, input.data(),
                     input.size(), inputDone, output.data(), output.size(), &done, nullptr, &spec, nullptr);
    if (error != nullptr || done != output.size())
        throw std::runtime_error("the rate conversion " + rates_ +
                                 " failed: " + (error != nullptr ? error : "libsoxr gave too few samples"));
    output.erase(output.begin(), output.begin() + runUp);
    return output;
}

/// The input's samples, and silence beyond its end.
std::vector<float> RateConvertedSource::readPadded(std::int64_t from, std::int64_t to) const {
    std::vector<float> samples(static_cast<std::size_t>(to - from));
    const std::int64_t end = std::min(to, source_->length());
    if (from < end)
        source_->read(from, std::span(samples).first(static_cast<std::size_t>(end - from)));
    return samples;
}

std::shared_ptr<SampleSource> convertedTo(std::shared_ptr<SampleSource> source, int inRate, int outRate,
                                          const Relabel& relabel) {
    if (inRate * relabel.to == outRate * relabel.from)
        return source;
    return std::make_shared<RateConvertedSource>(std::move(source), inRate, outRate, relabel);
}

void ScaledSource::read(std::int64_t position, std::span<float> samples) {
    source_->read(position, samples);
    multiply(samples, factor_);
}

} // namespace audlmd
