#include "loop_modes/RegistrationUnit.hpp"

[[gnu::init_priority(Aud::Render::initialiserPriority(6))]] static const Aud::Render::RegistrationUnit<6>
    unit;
