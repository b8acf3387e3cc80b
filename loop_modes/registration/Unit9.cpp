#include "loop_modes/RegistrationUnit.hpp"

[[gnu::init_priority(Aud::Render::initialiserPriority(9))]] static const Aud::Render::RegistrationUnit<9>
    unit;
