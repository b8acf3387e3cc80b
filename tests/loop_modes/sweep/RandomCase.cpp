#include "model/Model.hpp"
#include "tests/loop_modes/sweep/Sweep.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <utility>

namespace audlmd::test {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float nan = std::numeric_limits<float>::quiet_NaN();

RandomCase::Roll rollsOf(std::uint64_t seed) {
    return [engine = std::mt19937_64(seed)](std::uint32_t sides) mutable {
        return static_cast<std::uint32_t>(engine() >> 33) % sides;
    };
}

class Dice {
public:
    explicit Dice(RandomCase::Roll roll) : roll_(std::move(roll)) {}

    /// 0 to `sides` - 1.
    std::uint32_t roll(std::uint32_t sides) { return roll_(sides); }
    bool oneIn(std::uint32_t sides) { return roll(sides) == 0; }
    float uniform(float low, float high) {
        return low + (high - low) * static_cast<float>(roll(1 << 24)) * 0x1p-24F;
    }
    template <class T>
    T pick(std::initializer_list<T> from) {
        return from.begin()[roll(static_cast<std::uint32_t>(from.size()))];
    }

private:
    RandomCase::Roll roll_;
};

const std::vector<float>& samplePool() {
    static const std::vector<float> pool = [] {
        Dice dice(rollsOf(1));
        std::vector<float> samples(4096);
        for (float& sample : samples)
            sample = dice.oneIn(200) ? dice.pick({nan, infinity, -infinity, 1e-40F, -0.0F, 3e38F})
                                     : dice.uniform(-1.25F, 1.25F);
        return samples;
    }();
    return pool;
}

float randomUValue(Dice& dice) {
    if (dice.oneIn(3))
        return dice.pick({0.0F, -0.0F, 1.0F, 1.5F, std::nextafter(1.5F, 2.0F), std::nextafter(1.5F, 1.0F),
                          std::nextafter(1.0F, 2.0F), -0.1F, -infinity, infinity, nan, 1e30F, 1e-40F});
    if (dice.oneIn(3)) // On a node, or next to it.
        return std::nextafter(static_cast<float>(dice.roll(1503)) * 0.001F, dice.pick({-9.0F, 9.0F}));
    return dice.uniform(-0.2F, 1.7F);
}

float randomStep(Dice& dice) {
    return dice.oneIn(4) ? dice.pick({0.0F, -0.0F, 1e-9F, nan, infinity, -1e30F, 1.0F, -0.25F})
                         : dice.uniform(-0.06F, 0.06F);
}

std::uint32_t randomLength(Dice& dice) {
    return dice.oneIn(6) ? dice.pick({100000U, (1U << 24) + 1, 0xFFFFFFFFU}) : dice.roll(24);
}

/// Mostly an envelope of the mode's shape. The elapsed samples lie at and around each boundary of the phases.
void randomEnvelope(Dice& dice, unsigned int code, std::uint32_t (&words)[10]) {
    static constexpr std::uint32_t tags[12] = {0, 0, 0, 0, 0, 0, 4, 5, 6, 4, 5, 6};
    const auto curve = [&dice] {
        return dice.oneIn(40) ? dice.pick({0U, 4U, 0xFFFFFFFFU}) : dice.roll(3) + 1;
    };
    const std::uint32_t tag = dice.oneIn(40) ? dice.roll(8) : tags[code / 2 % 16];
    const std::uint32_t first = randomLength(dice);
    const std::uint32_t hold = randomLength(dice);
    const auto bits = [](float x) { return std::bit_cast<std::uint32_t>(x); };
    words[1] = bits(randomUValue(dice));
    words[2] = bits(randomUValue(dice));
    words[3] = tag;
    words[4] = bits(randomStep(dice));
    if (code / 2 % 16 == 8 || code / 2 % 16 == 11) {
        words[5] = bits(randomStep(dice));
        words[6] = first;
        words[7] = hold;
        words[8] = curve();
        words[9] = curve();
    } else {
        words[5] = first;
        words[6] = curve();
    }
    words[0] = dice.pick({0U, first, first + hold, dice.roll(70), 0xFFFFFFFFU}) + dice.roll(3) - 1;
}

Aud::SubSamplePos randomSubSamplePos(Dice& dice, bool isStep) {
    constexpr int one = 1073741823;
    const int fraction = static_cast<int>(dice.roll(one));
    if (dice.oneIn(2))
        return {static_cast<long>(dice.roll(3)), fraction};
    if (dice.oneIn(2))
        return dice.pick<Aud::SubSamplePos>(
            {{0, 0}, {1, 0}, {2, 0}, {0, 1}, {0, one - 1}, {0, one / 3}, {0, 536870912}});
    return dice.pick<Aud::SubSamplePos>(
        {{-1, 0}, {0, -5}, {-1, fraction}, {-2, 1}, {isStep ? 7 : 100, fraction}, {3, -one}});
}

void randomStatuses(Dice& dice, ScriptedHost& host) {
    const bool allReady = dice.oneIn(3);
    for (ScriptedSegment& segment : host.segments) {
        segment.statuses = {1};
        if (allReady || dice.oneIn(2))
            continue;
        segment.statuses.clear();
        for (std::uint32_t phases = dice.roll(3) + 1; phases > 0; --phases)
            segment.statuses.insert(segment.statuses.end(), dice.roll(9) + 1,
                                    dice.pick<std::uint8_t>({1, 1, 2, 2, 7, 0, 3, 255}));
        segment.statusAfterWait = dice.pick<std::uint8_t>({1, 1, 2, 3, 7});
    }
}

void randomMaterial(Dice& dice, ScriptedHost& host) {
    host.materialSamples = dice.oneIn(8) ? dice.pick<std::int64_t>({0, 1, 2}) : dice.roll(400) + 3;
    const std::uint32_t least =
        static_cast<std::uint32_t>(host.materialSamples) / 56 + 1; // At most 57 segments.
    for (std::int64_t first = 0; first < host.materialSamples;) {
        ScriptedSegment segment;
        segment.first = first;
        const std::uint32_t wanted = least + dice.roll(dice.pick({1U, 5U, 100U}));
        segment.length =
            static_cast<std::int32_t>(std::min<std::int64_t>(wanted, host.materialSamples - first));
        first += segment.length;
        host.segments.push_back(segment);
    }
    host.material = samplePool().data() + dice.roll(2048);
    randomStatuses(dice, host);
    host.emptyStatus = dice.pick({0, 7, 3});
    host.outside.index = dice.pick({0, -1, 1});
    if (dice.oneIn(20))
        host.inside = model::Place{-1, dice.pick({-1, -5})};
    // A host may let an iterator outside the material stand on samples; they are then read.
    if (!host.segments.empty() && dice.oneIn(4))
        host.outside = {static_cast<int>(dice.roll(static_cast<std::uint32_t>(host.segments.size()))), 0};
}

std::int64_t randomPosition(Dice& dice, std::int64_t length) {
    if (dice.oneIn(60))
        return dice.pick({std::numeric_limits<std::int64_t>::max() - 1, std::int64_t{-1} << 62,
                          std::numeric_limits<std::int64_t>::min() + 1});
    if (dice.oneIn(3)) // At a border, or the width of a block before it.
        return dice.pick<std::int64_t>({0, length, -64, length + 64}) + static_cast<int>(dice.roll(9)) - 4;
    return static_cast<std::int64_t>(dice.roll(static_cast<std::uint32_t>(length) + 1));
}

Request randomRequest(Dice& dice, unsigned int code, const ScriptedHost& host) {
    Request request;
    request.startPosition = randomPosition(dice, host.materialSamples);
    request.forwardFilteringStartPosition = randomPosition(dice, host.materialSamples);
    request.reverseFilteringStartPosition = randomPosition(dice, host.materialSamples);
    request.flag = dice.oneIn(2);
    request.forwardArgument =
        dice.roll(std::min<std::uint32_t>(3, static_cast<std::uint32_t>(host.segments.size())) + 1);
    request.subSampleStart = randomSubSamplePos(dice, false);
    request.subSampleStep = randomSubSamplePos(dice, true);
    request.speed = dice.oneIn(3) ? dice.pick({0.0F, -0.0F, -1.0F, 10.0F, infinity, nan, 1e-40F, 6.0F, 1.0F})
                                  : dice.uniform(0.1F, 4.0F);
    randomEnvelope(dice, code, request.envelope);
    request.outerLevelUValue = randomUValue(dice);
    request.count = dice.oneIn(4) ? dice.pick({0U, 1U, 2U, 130U}) : dice.roll(48);
    if (dice.oneIn(4))
        request.throwAt = dice.roll(dice.pick({20U, 200U, 2000U}));
    if (dice.oneIn(4))
        request.interfereAt = dice.roll(dice.pick({4U, 40U, 400U}));
    return request;
}

void randomRecord(Dice& dice, Aud::Render::PerSourceRecord& record) {
    record.strip = ce_handle(ScriptedHost::cookie);
    record.dynamicLevel.samplesToNextNode = dice.pick({0U, 1U, 2U, 9U, 100000U});
    record.dynamicLevel.uValue = randomUValue(dice);
    record.dynamicLevel.uValueStep = randomStep(dice);
    record.dynamicLevel.stationary = dice.pick<std::uint8_t>({0, 0, 0, 1, 255});
    record.srcState.outSample = dice.uniform(-1.0F, 1.0F);
    record.srcState.readIndex = dice.roll(64);
    record.srcState.nextSourcePos = 4711;
}

} // namespace

RandomCase::RandomCase(std::uint64_t seedOfAll, unsigned int modeCode, std::size_t output)
    : RandomCase(rollsOf(seedOfAll * 32768 + modeCode * 16 + output), modeCode, output) {
    seed = seedOfAll;
}

RandomCase::RandomCase(Roll roll, unsigned int modeCode, std::size_t output)
    : code(modeCode), outputType(output) {
    Dice dice(std::move(roll));
    curveTables = dice.roll(curveTableCount);
    speedLimit = dice.pick({6.0, 6.0, 1.5, 2.5, 8.0});
    host.keepsEvents = dice.oneIn(2);
    randomMaterial(dice, host);
    for (std::uint32_t nodes = dice.roll(5) + 1; nodes > 0; --nodes)
        host.levelSegments.push_back(
            {dice.pick({1U, 2U, 7U, 30U}), randomUValue(dice), randomStep(dice), dice.oneIn(5)});
    for (BandState& band : host.bands)
        band = {dice.uniform(-1.0F, 1.0F), dice.uniform(-1.0F, 1.0F), dice.uniform(-1.0F, 1.0F)};

    randomRecord(dice, record);
    std::size_t total = 0;
    for (std::uint32_t calls = dice.roll(4) + 1; calls > 0; --calls) {
        Request request = randomRequest(dice, code, host);
        if (!requests.empty() && dice.oneIn(2)) { // Much as a host that goes on.
            const Request& previous = requests.back();
            const std::int64_t distance = code >= 1024 ? previous.count : -std::int64_t{previous.count};
            request = previous;
            request.startPosition = static_cast<std::int64_t>(
                static_cast<std::uint64_t>(previous.startPosition) + static_cast<std::uint64_t>(distance));
            request.envelope[0] += previous.count;
            request.throwAt = ScriptedHost::never;
        }
        total += request.count;
        requests.push_back(request);
    }

    const std::size_t bytes = model::containerBytes[outputType % 7];
    buffer.resize((total + 4) * bytes);
    for (std::uint8_t& byte : buffer)
        byte = static_cast<std::uint8_t>(dice.roll(256));
    if (bytes == 4 && outputType % 7 == 0 && !dice.oneIn(8))
        for (std::size_t i = 0; i < buffer.size(); i += 4) {
            const float sample = dice.uniform(-1.25F, 1.25F);
            std::memcpy(&buffer[i], &sample, sizeof sample);
        }
}

} // namespace audlmd::test
