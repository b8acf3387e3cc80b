#include "loop_modes/RegistrationUnit.hpp"

[[gnu::init_priority(Aud::Render::initialiserPriority(1))]] static const Aud::Render::RegistrationUnit<1>
    unit;
