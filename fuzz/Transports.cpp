#include "fuzz/Fuzzing.hpp"
#include "host/play/Transport.hpp"
#include "host/services/RenderFunctions.hpp"
#include "tests/host/play/LiveDeck.hpp"

#include <algorithm>
#include <optional>
#include <utility>

namespace audlmd::fuzz {
namespace {

constexpr std::int64_t soundLength = 12000;
constexpr std::int64_t shortestLoop = 2400;
/// Playback clips 120 dB above full scale; the level of the transport goes up to 10 dB above that.
constexpr float loudestLevel = 3.1623F;
constexpr float loudest = 0x1p20F * loudestLevel;

/// A live player on one thread: the same input always plays the same.
class Player {
public:
    explicit Player(const StripSettings& strip)
        : strip_(strip),
          deck_({test::sineSource(440.0, soundLength), test::sineSource(1000.0, soundLength)}, strip),
          end_(deck_.content.length()), transport_(end_, shortestLoop) {}

    void order(FuzzedDataProvider& data) {
        switch (data.ConsumeIntegralInRange(0, 6)) {
        case 0:
            return transport_.play(heard());
        case 1:
            return transport_.stop();
        case 2:
            return setSpeed(drawNumber(data, Reach::anything, -8.0, 8.0));
        case 3:
            return transport_.seek(drawWhole(data, Reach::anything, 0, end_), heard());
        case 4:
            return transport_.jog(drawWhole(data, Reach::anything, -4000, 4000), heard());
        case 5:
            return setLoop(data);
        default:
            deck_.output.setGain(data.ConsumeFloatingPointInRange(0.0F, loudestLevel));
        }
    }

    /// Hands the order over, and has the device take frames.
    void pull(std::size_t frames, bool renders) {
        const LiveOrder& order = transport_.order();
        require(order.generation >= deck_.order.generation, "orders are numbered upwards");
        for (const std::optional<RangeSample>& place : {order.startAt, order.stopAt})
            require(!place || (*place >= 0 && *place <= RangeSample() + end_),
                    "orders stay inside the sound");
        if (order.generation != deck_.order.generation) {
            if (order.startAt)
                deck_.output.startAt(*order.startAt, order.generation);
            deck_.output.turnTo(order.generation);
        }
        deck_.order = order;
        pulled_ = deck_.pull(frames, renders);
        for (const float sample : pulled_)
            require(std::fabs(sample) <= loudest, "the device gets sound: " + std::to_string(sample));
        require(std::isfinite(deck_.output.position()), "the transport stands somewhere");
    }

    /// Whatever came before, the transport can be stopped, and played from its start.
    void requireInOrder() {
        transport_.stop();
        pull(2 * test::LiveDeck::fadeFrames, true);
        require(pulled_.back() == 0.0F, "a transport that is stopped is silent");
        transport_.setLoop(std::nullopt);
        setSpeed(1.0);
        transport_.seek(0, heard());
        transport_.play(heard());
        pull(600, true);
        require(heard().hasEnded || heard().position > 0, "a transport that plays moves on");
    }

private:
    Transport::Heard heard() const {
        return {.position = std::clamp<std::int64_t>(std::llround(deck_.output.position()), 0, end_),
                .hasEnded = deck_.output.hasEnded(transport_.order().generation)};
    }

    void setSpeed(double speed) {
        try {
            settingsAt(strip_, speed);
        } catch (const std::invalid_argument& error) {
            return requireOneLine(error.what());
        }
        transport_.setSpeed(speed);
    }

    void setLoop(FuzzedDataProvider& data) {
        try {
            transport_.setLoop(RangeSpan{drawWhole(data, Reach::anything, 0, end_),
                                         drawWhole(data, Reach::anything, 0, end_)});
        } catch (const std::invalid_argument& error) {
            requireOneLine(error.what());
        }
    }

    const StripSettings strip_;
    test::LiveDeck deck_;
    const Distance<SourceRate> end_;
    Transport transport_;
    std::vector<float> pulled_;
};

} // namespace
} // namespace audlmd::fuzz

/// Orders to the transport of live playback, and a device that takes frames meanwhile, also where the
/// renderer does not keep up. The device gets sound within limits, and at the end the transport still stops
/// and plays. Settings that need a mode which this program does not have are passed over.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace audlmd;
    FuzzedDataProvider data(bytes, size);
    try {
        StripSettings strip;
        strip.to = fuzz::soundLength;
        fuzz::Player player(
            data.ConsumeBool() ? strip : fuzz::drawSettings(data, fuzz::Reach::usual, fuzz::soundLength));
        for (int orders = 0; orders < 40 && data.remaining_bytes() > 0; ++orders) {
            player.order(data);
            player.pull(data.ConsumeIntegralInRange<std::size_t>(0, 1000),
                        data.ConsumeIntegral<std::uint8_t>() < 240);
        }
        player.requireInOrder();
    } catch (const std::invalid_argument& error) {
        fuzz::requireOneLine(error.what());
    } catch (const NoSuchMode&) {
    }
    return 0;
}
