#include "loop_modes/RenderFunctionGroup.hpp"

template class Aud::Render::LoopModesDespatch::RenderFunctionGroup<8>;
