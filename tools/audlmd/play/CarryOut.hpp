#pragma once

#include "host/play/LivePlayer.hpp"
#include "tools/audlmd/play/TransportKeys.hpp"

namespace audlmd::command {

/// Has the player do what a command says. Does nothing for Quit, which concerns the program.
void carryOut(const TransportCommand& command, LivePlayer& player);

} // namespace audlmd::command
