#include "host/signal/BlockEqualiser.hpp"

#include "ole/Aud/MultiBandBiquadApplyingIterator.hpp"

#include <array>
#include <cstddef>
#include <emmintrin.h>

namespace audlmd {
namespace {

constexpr std::size_t bandCount = 5;
/// A band works on a sample two steps after the band before it, because the result takes as long as two steps
/// to come through.
constexpr std::size_t lag = 2;
/// The first step in which all bands have a sample.
constexpr std::size_t firstStep = lag * (bandCount - 1);
/// Shorter blocks are filtered sample by sample.
constexpr std::size_t shortestBlock = 4 * firstStep;

/// The two numbers of two neighbouring bands, the first band's in the low half.
struct BandPair {
    __m128d b0, b1, b2, a1, a2;
    __m128d first, second;
    /// Results, as the next band reads them, of the last step and of the step before.
    __m128d result, resultBefore;
};

/// The lanes, all bits set, in which a result is so small, so large or so undefined that the delays must be
/// settled, see Biquad.ipp. A NaN fails both comparisons.
__m128d extremeLanes(__m128d results) {
    const __m128d magnitudes = _mm_andnot_pd(_mm_set1_pd(-0.0), results);
    const __m128d usual = _mm_and_pd(_mm_cmpge_pd(magnitudes, _mm_set1_pd(0x1p-100)),
                                     _mm_cmple_pd(magnitudes, _mm_set1_pd(0x1p100)));
    return _mm_andnot_pd(usual, _mm_castsi128_pd(_mm_set1_epi32(-1)));
}

/// The delays with 0 in place of those that are extreme, in the chosen lanes.
__m128d settledIn(__m128d lanes, __m128d delays) {
    const __m128d magnitudes = _mm_andnot_pd(_mm_set1_pd(-0.0), delays);
    const __m128d kept = _mm_and_pd(_mm_cmpgt_pd(magnitudes, _mm_set1_pd(0x1p-200)),
                                    _mm_cmplt_pd(magnitudes, _mm_set1_pd(0x1p200)));
    return _mm_and_pd(delays, _mm_or_pd(kept, _mm_andnot_pd(lanes, _mm_castsi128_pd(_mm_set1_epi32(-1)))));
}

/// One sample of each of the two bands, with the operations of Biquad.ipp in their order, so with its bits.
[[gnu::always_inline]] inline void filter(BandPair& bands, __m128d in) {
    const __m128d out = _mm_add_pd(_mm_mul_pd(bands.b0, in), bands.first);
    const __m128d towardsFirst = _mm_add_pd(_mm_mul_pd(bands.b1, in), bands.second);
    const __m128d towardsSecond = _mm_add_pd(_mm_mul_pd(bands.b2, in), _mm_setzero_pd());
    bands.first = _mm_sub_pd(towardsFirst, _mm_mul_pd(bands.a1, out));
    bands.second = _mm_sub_pd(towardsSecond, _mm_mul_pd(bands.a2, out));
    bands.resultBefore = bands.result;
    // Bands exchange single precision.
    bands.result = _mm_cvtps_pd(_mm_cvtpd_ps(out));
    const __m128d extreme = extremeLanes(bands.result);
    if (_mm_movemask_pd(extreme) != 0) [[unlikely]] {
        bands.first = settledIn(extreme, bands.first);
        bands.second = settledIn(extreme, bands.second);
    }
}

} // namespace

/// One block. Six lanes work on five bands at the same time, each band a little behind the one before: first
/// the early bands run ahead, then all bands run side by side, at last the late bands catch up.
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
        BandPair low = load(0);
        BandPair middle = load(2);
        BandPair last = load(4);
        for (std::size_t step = firstStep; step + 1 < samples_.size(); ++step) {
            const __m128d sample = _mm_set_sd(static_cast<double>(samples_[step]));
            const __m128d toLow = _mm_unpacklo_pd(sample, low.resultBefore);
            const __m128d toMiddle = _mm_shuffle_pd(low.resultBefore, middle.resultBefore, 1);
            const __m128d toLast = _mm_shuffle_pd(middle.resultBefore, _mm_set1_pd(1.0), 1);
            filter(low, toLow);
            filter(middle, toMiddle);
            filter(last, toLast);
            samples_[step - firstStep] = static_cast<float>(_mm_cvtsd_f64(last.result));
        }
        store(low, 0);
        store(middle, 2);
        store(last, 4);
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

    BandPair load(unsigned int band) {
        // The last band has no neighbour: a section that passes samples through keeps it company.
        const HostStorage::Biquad alone;
        const HostStorage::Biquad& low = equaliser_.band(band);
        const HostStorage::Biquad& high = band + 1 < bandCount ? equaliser_.band(band + 1) : alone;
        const auto unread = [&](unsigned int ofBand, std::size_t index) {
            return ofBand + 1 < bandCount ? static_cast<double>(unread_[ofBand].fromEnd(index)) : 0.0;
        };
        return {.b0 = _mm_set_pd(high.b0_, low.b0_),
                .b1 = _mm_set_pd(high.b1b2_.first, low.b1b2_.first),
                .b2 = _mm_set_pd(high.b1b2_.second, low.b1b2_.second),
                .a1 = _mm_set_pd(high.a1a2_.first, low.a1a2_.first),
                .a2 = _mm_set_pd(high.a1a2_.second, low.a1a2_.second),
                .first = _mm_set_pd(high.delays_.first, low.delays_.first),
                .second = _mm_set_pd(high.delays_.second, low.delays_.second),
                .result = _mm_set_pd(unread(band + 1, 1), unread(band, 1)),
                .resultBefore = _mm_set_pd(unread(band + 1, 2), unread(band, 2))};
    }

    void store(const BandPair& bands, unsigned int band) {
        storeLane(band, {bands.first, bands.second, bands.result, bands.resultBefore});
        const auto high = [](__m128d pair) { return _mm_unpackhi_pd(pair, pair); };
        if (band + 1 < bandCount)
            storeLane(band + 1,
                      {high(bands.first), high(bands.second), high(bands.result), high(bands.resultBefore)});
    }

    struct Lane {
        __m128d first, second, result, resultBefore;
    };

    void storeLane(unsigned int band, const Lane& lane) {
        HostStorage::Biquad& section = equaliser_.band(band);
        section.delays_.first = _mm_cvtsd_f64(lane.first);
        section.delays_.second = _mm_cvtsd_f64(lane.second);
        section.lastResult_ = static_cast<float>(_mm_cvtsd_f64(lane.result));
        unread_[band] = {};
        unread_[band].add(static_cast<float>(_mm_cvtsd_f64(lane.resultBefore)));
        unread_[band].add(section.lastResult_);
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
