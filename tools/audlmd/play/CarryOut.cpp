#include "tools/audlmd/play/CarryOut.hpp"

#include "host/signal/GainLaws.hpp"

namespace audlmd::command {
namespace {

struct Orders {
    LivePlayer& player;

    void operator()(Play) const { player.play(); }
    void operator()(Stop) const { player.stop(); }
    void operator()(Quit) const {}
    void operator()(SetSpeed command) const { player.setSpeed(command.speed); }
    void operator()(Seek command) const { player.seek(command.position); }
    void operator()(Jog command) const { player.jog(command.samples); }
    void operator()(SetLoop command) const { player.setLoop(command.range); }
    void operator()(SetLevel command) const {
        player.setLevel(static_cast<float>(mixerStyleUValueOfDecibels(command.decibels)));
    }
};

} // namespace

void carryOut(const TransportCommand& command, LivePlayer& player) {
    std::visit(Orders{player}, command);
}

} // namespace audlmd::command
