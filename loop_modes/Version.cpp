#include "loop_modes/Version.hpp"

const char* audLMDDllVersionStr() {
    return AUDLMD_VERSION;
}
