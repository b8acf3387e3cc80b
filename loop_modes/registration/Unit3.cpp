#include "loop_modes/RegistrationUnit.hpp"

[[gnu::init_priority(Aud::Render::initialiserPriority(3))]] static const Aud::Render::RegistrationUnit<3>
    unit;
