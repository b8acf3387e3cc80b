#include "c/Failure.hpp"
#include "c/Options.hpp"
#include "c/Sound.hpp"
#include "c/Text.hpp"
#include "c/audlmd.h"
#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/play/LivePlayer.hpp"
#include "host/signal/GainLaws.hpp"
#include "host/timeline/ReportText.hpp"

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

struct audlmd_player {
    std::unique_ptr<audlmd::LivePlayer> player;
    /// What is played, of a mix: names the strips of a report.
    audlmd::Timeline timeline;
};

namespace audlmd::c {
namespace {

LiveOptions optionsIn(Options options) {
    LiveOptions live;
    live.latency = options.takeNumber("latency").value_or(live.latency);
    live.fade = options.takeNumber("fade").value_or(live.fade);
    live.inlined = &inlinedRenderFunction;
    options.finish();
    return live;
}

/// Gives an order to the player. Returns 0, or -1 if the player refuses.
template <class Order>
int give(audlmd_player* player, Order&& order) {
    return guarded(-1, [&] {
        order(*player->player);
        return 0;
    });
}

} // namespace
} // namespace audlmd::c

using namespace audlmd;
using c::give;

audlmd_player* audlmd_player_new(const audlmd_sound* sound, const char* const* options) {
    return c::guarded<audlmd_player*>(nullptr, [&] {
        const LiveOptions live = c::optionsIn(c::Options(options));
        const c::Sound& played = sound->sound;
        auto player = std::make_unique<audlmd_player>();
        if (played.mix) {
            player->timeline = played.mix->timeline();
            player->player = std::make_unique<LivePlayer>(player->timeline, played.open, live);
        } else {
            player->player = std::make_unique<LivePlayer>(played.media, StripSettings{}, live);
        }
        return player.release();
    });
}

void audlmd_player_free(audlmd_player* player) {
    delete player;
}

void audlmd_player_fill(audlmd_player* player, float* interleaved, int64_t frames) {
    player->player->fill({interleaved, static_cast<std::size_t>(frames) * player->player->channels()});
}

int audlmd_player_play(audlmd_player* player) {
    return give(player, [](LivePlayer& live) { live.play(); });
}

int audlmd_player_stop(audlmd_player* player) {
    return give(player, [](LivePlayer& live) { live.stop(); });
}

int audlmd_player_seek(audlmd_player* player, int64_t position) {
    return give(player, [&](LivePlayer& live) { live.seek(position); });
}

int audlmd_player_set_speed(audlmd_player* player, double speed) {
    return give(player, [&](LivePlayer& live) { live.setSpeed(speed); });
}

int audlmd_player_set_loop(audlmd_player* player, int64_t from, int64_t to) {
    return give(player, [&](LivePlayer& live) {
        live.setLoop(from == 0 && to == 0 ? std::nullopt : std::optional(RangeSpan{from, to}));
    });
}

int audlmd_player_set_gain(audlmd_player* player, double decibels) {
    return give(player, [&](LivePlayer& live) {
        if (!(decibels <= faderTopDecibels))
            throw std::invalid_argument("a gain of live playback is at most +10 dB");
        live.setLevel(static_cast<float>(mixerStyleUValueOfDecibels(decibels)));
    });
}

int64_t audlmd_player_position(const audlmd_player* player) {
    return player->player->position().number();
}

int audlmd_player_is_playing(const audlmd_player* player) {
    return player->player->isPlaying() ? 1 : 0;
}

float audlmd_player_take_peak(audlmd_player* player, int channel) {
    return c::guarded(-1.0F, [&] {
        if (channel < 0 || static_cast<std::size_t>(channel) >= player->player->channels())
            throw std::invalid_argument("there is no channel " + std::to_string(channel));
        return player->player->takePeak(static_cast<std::size_t>(channel));
    });
}

char* audlmd_player_report(const audlmd_player* player) {
    return c::guarded<char*>(nullptr, [&] {
        return c::copied(
            timeline::writeReport(player->player->report(), player->player->underruns(), player->timeline));
    });
}
