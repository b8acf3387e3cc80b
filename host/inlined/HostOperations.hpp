#pragma once

/// The bodies of the stand-alone host's operations that a render function calls per sample, for units that
/// compile render functions into a program.
///
/// A body stands once, in an .ipp file. The host's own .cpp file includes the .ipp with an empty
/// AUDLMD_HOST_OPERATION and so defines the operation that libaudlmd_host.so exports and libaudlmd.so calls.
/// Here the same body is `gnu_inline`: the compiler inlines the body and emits no definition. The operation
/// in libaudlmd_host.so therefore stays the only one of the program, and no weak symbol can take its place.
#define AUDLMD_HOST_OPERATION [[gnu::gnu_inline, gnu::always_inline]] inline

// clang++ asks for an `extern`, which the language does not allow on a member function.
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wgnu-inline-cpp-without-extern"
#endif

#include "host/cache/SampleCacheSegment.ipp"
#include "host/signal/Biquad.ipp"

#ifdef __clang__
#pragma clang diagnostic pop
#endif

#undef AUDLMD_HOST_OPERATION
