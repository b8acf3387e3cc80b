#pragma once

/// The fastest speed of the filtering converter, in source samples per output sample: 1.5 to 8.0. Set once,
/// while the library is being loaded, from the setting "AudioPlaybackSpeedLimit".
///
/// Visible by default, because a program cannot link to protected data.
[[gnu::visibility("default")]] extern double cfgAudioPlaybackSpeedLimit;
