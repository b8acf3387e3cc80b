#include "loop_modes/RegistrationUnit.hpp"

[[gnu::init_priority(Aud::Render::initialiserPriority(4))]] static const Aud::Render::RegistrationUnit<4>
    unit;
