#pragma once

#include "host/cache/MaterialCache.hpp"
#include "host/services/RenderFunctions.hpp"
#include "host/signal/Unclipped.hpp"

#include <cstddef>

namespace audlmd {

/// \snippet play.cpp player
struct LiveOptions {
    /// How far ahead of the device rendering is, in seconds: 0.005 to 2. A change is heard within this time
    /// or sooner. The trap: must exceed what the device asks for at a time, or the device starves.
    double latency = 0.05;
    /// Of every fade at a change of the transport, in seconds: 0.001 to 0.1.
    double fade = 0.005;
    /// How far ahead of rendering samples are loaded. Shorter segments than usual start sooner.
    MaterialCacheOptions cache{.segmentLength = 16384, .segmentsAhead = 6};
    /// Threads that mix a timeline, see MixerOptions.
    std::size_t mixThreads = 0;
    /// Finds the render functions that are compiled into the program, see MixerOptions::inlined.
    RenderFunctionLookUp<Unclipped> inlined = nullptr;
};

} // namespace audlmd
