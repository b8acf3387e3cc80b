// Compiles the rest of the file once for each width of vectors, see https://github.com/google/highway. Whoever
// includes this has defined HWY_TARGET_INCLUDE as its own path.
//
// Every operation is rounded alone, as the language has it: no fused multiply-add. So each width gives the bits of
// the plain loop. Wider vectors than 256 bits make no loop here faster: most wait for memory.

#undef HWY_DISABLED_TARGETS
#undef HWY_BROKEN_EMU128
#define HWY_DISABLED_TARGETS (HWY_SSSE3 | HWY_AVX3 | HWY_AVX3_DL)
// One sample at a time, then, and not vectors that are emulated.
#define HWY_BROKEN_EMU128 1
#include <hwy/foreach_target.h>
// After the file above.
#include <hwy/highway.h>
