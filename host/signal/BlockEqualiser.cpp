#include "host/signal/BlockEqualiser.hpp"

#include "host/signal/BandsSideBySide.hpp"
#include "ole/Aud/MultiBandBiquadApplyingIterator.hpp"

#include <array>
#include <cstddef>

namespace audlmd {
namespace {

constexpr std::size_t bandCount = BandsSideBySide::count;
constexpr std::size_t lag = BandsSideBySide::lag;
/// The first step in which all bands have a sample.
constexpr std::size_t firstStep = lag * (bandCount - 1);
/// Shorter blocks are filtered sample by sample.
constexpr std::size_t shortestBlock = 4 * firstStep;

} // namespace

/// One block. All bands work at the same time, each a little behind the one before: first the early bands run
/// ahead, then all bands run side by side, at last the late bands catch up.
class BlockEqualiser {
public:
    using Equaliser = Aud::Filter::MultiBandBiquad<5U>;

    BlockEqualiser(Equaliser& equaliser, std::span<float> samples)
        : equaliser_(equaliser), samples_(samples) {}

    void run() {
        runAhead();
        runSideBySide();
        catchUp();
    }

private:
    /// Results of a band that the next band has not read yet.
    struct Unread {
        std::array<float, firstStep + 3> results{};
        std::size_t count = 0;

        void add(float result) { results[count++] = result; }
        /// Counted from the last one, which is 1.
        float fromEnd(std::size_t index) const { return results[count - index]; }
    };

    void runAhead() {
        for (unsigned int band = 0; band + 1 < bandCount; ++band)
            for (std::size_t i = 0; i < firstStep - lag * band; ++i)
                unread_[band].add(equaliser_.band(band).processSample(
                    band == 0 ? samples_[i] : unread_[band - 1].results[i]));
    }

    /// Leaves the last sample to the sections themselves, which also keep the state before it.
    void runSideBySide() {
        BandsSideBySide bands;
        for (unsigned int band = 0; band < bandCount; ++band)
            load(band, bands);
        bands.run(&samples_[firstStep], samples_.data(), samples_.size() - 1 - firstStep);
        for (unsigned int band = 0; band < bandCount; ++band)
            store(bands, band);
    }

    void catchUp() {
        const float lastSample = samples_.back();
        for (unsigned int band = 0; band < bandCount; ++band) {
            if (band == 0)
                unread_[band].add(equaliser_.band(band).processSample(lastSample));
            else
                for (std::size_t i = 0; i < unread_[band - 1].count; ++i)
                    unread_[band].add(equaliser_.band(band).processSample(unread_[band - 1].results[i]));
        }
        // The two results before those are in place already.
        const Unread& results = unread_[bandCount - 1];
        for (std::size_t i = 1; i + 2 <= results.count; ++i)
            samples_[samples_.size() - i] = results.fromEnd(i);
    }

    void load(unsigned int band, BandsSideBySide& bands) {
        const HostStorage::Biquad& section = equaliser_.band(band);
        bands.b0[band] = section.b0_;
        bands.b1[band] = section.b1b2_.first;
        bands.b2[band] = section.b1b2_.second;
        bands.a1[band] = section.a1a2_.first;
        bands.a2[band] = section.a1a2_.second;
        bands.firstDelay[band] = section.delays_.first;
        bands.secondDelay[band] = section.delays_.second;
        if (band + 1 < bandCount) {
            bands.result[band] = unread_[band].fromEnd(1);
            bands.resultBefore[band] = unread_[band].fromEnd(2);
        }
    }

    void store(const BandsSideBySide& bands, unsigned int band) {
        HostStorage::Biquad& section = equaliser_.band(band);
        section.delays_.first = bands.firstDelay[band];
        section.delays_.second = bands.secondDelay[band];
        section.lastResult_ = bands.result[band];
        unread_[band] = {};
        unread_[band].add(bands.resultBefore[band]);
        unread_[band].add(bands.result[band]);
    }

    Equaliser& equaliser_;
    std::span<float> samples_;
    std::array<Unread, bandCount> unread_{};
};

void filterBlock(Aud::Filter::MultiBandBiquad<5U>& equaliser, std::span<float> samples) {
    if (samples.size() >= shortestBlock)
        BlockEqualiser(equaliser, samples).run();
    else
        for (float& sample : samples)
            sample = equaliser.processSample(sample);
}

} // namespace audlmd
