#include "loop_modes/RegistrationUnit.hpp"

[[gnu::init_priority(Aud::Render::initialiserPriority(8))]] static const Aud::Render::RegistrationUnit<8>
    unit;
