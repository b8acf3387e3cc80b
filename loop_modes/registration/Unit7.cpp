#include "loop_modes/RegistrationUnit.hpp"

[[gnu::init_priority(Aud::Render::initialiserPriority(7))]] static const Aud::Render::RegistrationUnit<7>
    unit;
