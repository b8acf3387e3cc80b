#include "loop_modes/RegistrationUnit.hpp"

[[gnu::init_priority(Aud::Render::initialiserPriority(2))]] static const Aud::Render::RegistrationUnit<2>
    unit;
