#include "loop_modes/RenderFunction.hpp"

const char* audLMDDllVersionStr() {
    return AUDLMD_VERSION;
}
