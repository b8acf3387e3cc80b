#pragma once

/// The fastest speed of the filtering converter, in source samples per output sample: 1.5 to 8.0. Set once,
/// while the library is being loaded, from the setting "AudioPlaybackSpeedLimit".
#if __has_cpp_attribute(gnu::nodirect_extern_access)
// A program must ask where it is: one that g++ lets assume its place gets a copy, which the library never
// sets.
[[gnu::nodirect_extern_access]]
#endif
extern double cfgAudioPlaybackSpeedLimit;
