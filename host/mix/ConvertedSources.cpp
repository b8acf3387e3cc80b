#include "host/mix/ConvertedSources.hpp"

#include "host/services/SampleRates.hpp"
#include "host/signal/BlockLoops.hpp"

#include <soxr.h>

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>

namespace audlmd {
namespace {

constexpr std::int64_t blockLength = 32768;
/// The blocks of two neighbouring segments of the cache, which are loaded in either order.
constexpr std::size_t mostKeptBlocks = 5;
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

std::invalid_argument refusal(int inRate, int outRate, const std::string& reason) {
    return std::invalid_argument("cannot convert from " + std::to_string(inRate) + " Hz to " +
                                 std::to_string(outRate) + " Hz: " + reason +
                                 "; convert the file first, for example with sox or ffmpeg");
}

/// Designs the filters once, to learn of an error before the first read. Without AVX, the first resampler
/// builds tables that all share, and libsoxr 0.1.3 does not lock them. So one is built
/// here, under our lock.
void tryRates(int inRate, int outRate) {
    static Mutex designing;
    const Lock lock(designing);
    soxr_error_t error = nullptr;
    const soxr_quality_spec_t spec = quality();
    soxr_delete(soxr_create(inRate, outRate, 1, &error, nullptr, &spec, nullptr));
    if (error != nullptr)
        throw refusal(inRate, outRate, error);
}

} // namespace

RateConvertedSource::RateConvertedSource(std::shared_ptr<SampleSource> source, int inRate, int outRate)
    : source_(std::move(source)), inRate_(inRate), outRate_(outRate) {
    if (std::min(inRate, outRate) < lowestSampleRate || std::max(inRate, outRate) > highestSampleRate)
        throw refusal(inRate, outRate,
                      "both rates must be from " + std::to_string(lowestSampleRate) + " to " +
                          std::to_string(highestSampleRate) + " Hz");
    tryRates(inRate, outRate);
    const std::int64_t common = std::gcd(inRate, outRate);
    inPeriod_ = inRate / common;
    outPeriod_ = outRate / common;
    // Whole periods apart from the rest: the product of a long length and a period does not fit into 64 bits.
    const std::int64_t length = source_->length();
    if (static_cast<double>(length) / inRate * outRate > 0x1p60)
        throw refusal(inRate, outRate, "the result is longer than 2^60 samples");
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
    const soxr_error_t error = soxr_oneshot(inRate_, outRate_, 1, input.data(), input.size(), inputDone,
                                            output.data(), output.size(), &done, nullptr, &spec, nullptr);
    if (error != nullptr || done != output.size())
        throw std::runtime_error(
            "the rate conversion from " + std::to_string(inRate_) + " Hz to " + std::to_string(outRate_) +
            " Hz failed: " + (error != nullptr ? error : "libsoxr gave too few samples"));
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

std::shared_ptr<SampleSource> convertedTo(std::shared_ptr<SampleSource> source, int inRate, int outRate) {
    if (inRate == outRate)
        return source;
    return std::make_shared<RateConvertedSource>(std::move(source), inRate, outRate);
}

void ScaledSource::read(std::int64_t position, std::span<float> samples) {
    source_->read(position, samples);
    multiply(samples, factor_);
}

} // namespace audlmd
