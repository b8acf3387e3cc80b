#include "sounds.hpp"
#include <host/play/LivePlayer.hpp>

#undef NDEBUG
#include <cassert>
#include <chrono>
#include <cstdio>
#include <thread>

using namespace audlmd;

static void listen() {
    //! [player]
    LivePlayer player(openSoundFile("tone.wav"), StripSettings{}, {.latency = 0.1});
    player.seek(24000);
    player.setLevel(0.9F); // 1 is full level
    player.play();

    // The audio callback of the program's audio interface calls this, again and again.
    std::vector<float> device(256 * player.channels());
    for (int block = 0; player.position() <= 24000 && block < 10000; ++block) {
        player.fill(device);
        std::this_thread::sleep_for(std::chrono::milliseconds(1)); // a device would do this
    }
    assert(player.isPlaying() && player.takePeak(0) >= 0.0F && player.sampleRate() == 48000);

    player.setSpeed(-2.0);               // backwards, at twice the speed
    player.setLoop(RangeSpan{0, 24000}); // again and again
    player.jog(-480);                    // jumps by 10 ms
    player.stop();
    assert(player.speed() == -2.0 && player.loop() && player.length() == 48000);
    //! [player]

    //! [report]
    const LiveUnderruns lost = player.underruns(); // waits for nothing
    const LiveReport report = player.report();
    if (!report.sound.failure.empty() || lost.lateSamples + lost.starvedFrames > 0)
        std::printf("%s; %llu samples were late\n", report.sound.failure.c_str(),
                    static_cast<unsigned long long>(lost.lateSamples));
    //! [report]
}

static void order() {
    //! [transport]
    Transport transport(48000, 2400); // a sound of a second; loops of 50 ms at least
    const Transport::Heard atStart{.position = 0};
    transport.play(atStart);
    transport.seek(12000, atStart); // goes on playing there
    transport.setLoop(RangeSpan{12000, 24000});
    assert(transport.order().plays && transport.order().startAt == RangeSample(12000) && transport.isPlaying(atStart));
    transport.setSpeed(0.5);
    transport.jog(480, {.position = 13000});
    transport.stop();
    assert(!transport.order().plays && transport.speed() == 0.5);
    //! [transport]
}

int main() {
    writeTone("tone.wav", 48000);
    listen();
    order();
}
