#pragma once

namespace Aud::Filter {

/// One second-order section. Its two operations are all that the renderer calls; coefficients are the host's.
class Biquad {
public:
    /// H(z) = (b0 + b1 z^-1 + b2 z^-2) / (1 + a1 z^-1 + a2 z^-2). As made: the pass-through section.
    struct Coefficients {
        double b0 = 1.0;
        double b1 = 0.0;
        double b2 = 0.0;
        double a1 = 0.0;
        double a2 = 0.0;
    };

    void setCoefficients(const Coefficients& coefficients);
    /// Forgets all samples; the coefficients stay.
    void reset();

    /// Filters one sample, remembers the result and returns it.
    float processSample(float x);
    /// The result of the most recent processSample.
    float getLastProcessSampleResult();

    /// Takes back the most recent processSample, for a host that reads a sample twice. Once only: what came
    /// before it is no longer known.
    void stepBack() {
        delays_ = delaysBefore_;
        lastResult_ = lastResultBefore_;
    }

private:
    /// Two numbers that are used side by side. Aligned, because a pair that lies across two cache lines makes
    /// the filter wait for what it has just stored, and takes twice the time.
    struct alignas(16) Pair {
        double first = 0.0;
        double second = 0.0;
    };

    Pair b1b2_;
    Pair a1a2_;
    Pair delays_;
    /// When the most recent processSample began.
    Pair delaysBefore_;
    double b0_ = 1.0;
    float lastResult_ = 0.0F;
    float lastResultBefore_ = 0.0F;
};

/// `Bands` sections in series, stored one after another.
template <unsigned int Bands>
class MultiBandBiquad {
public:
    /// Runs the sample through every section in band order. The renderer defines it.
    float processSample(float x);

    /// The result of the last section's most recent processSample.
    float getLastProcessSampleResult() { return bands_[Bands - 1].getLastProcessSampleResult(); }

    /// Every section's.
    void stepBack() {
        for (Biquad& section : bands_)
            section.stepBack();
    }

    Biquad& band(unsigned int number) { return bands_[number]; }

private:
    Biquad bands_[Bands];
};

} // namespace Aud::Filter
