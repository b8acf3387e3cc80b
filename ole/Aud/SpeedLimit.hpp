#pragma once

/// The fastest speed of the filtering converter, in source samples per output sample: 1.5 to 8.0.
///
/// Set once, while the library is being loaded, from the setting "AudioPlaybackSpeedLimit". The one exported
/// variable: a host's program may name it with a plain `extern double`. A program that is not
/// position-independent then holds a copy, so the library reaches the variable by one look-up at load and
/// never by a fixed distance.
/// \snippet modes.cpp version
[[gnu::visibility("default")]] extern double cfgAudioPlaybackSpeedLimit;
