#include "loop_modes/RegistrationUnit.hpp"

[[gnu::init_priority(Aud::Render::initialiserPriority(5))]] static const Aud::Render::RegistrationUnit<5>
    unit;
