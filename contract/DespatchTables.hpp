#pragma once

namespace Loki {

/// A distinct type for every integer, so that a mode code can select a class at compile time. The parameter
/// is an int, because the type is part of the exported names.
template <int Value>
struct Int2Type {
    static constexpr int value = Value;
};

} // namespace Loki

namespace Orv::ModeMetaHelpers2 {

template <class Fn, class Tag>
class Despatcher;

} // namespace Orv::ModeMetaHelpers2

namespace Aud {

namespace Render {

struct IteratorCreationParams;

namespace LoopModesDespatch {

/// The types that belong to one output type's table.
template <class Out>
struct Types {
    struct ProcessSamplesTag;
    using ProcessSamples = void (*)(IteratorCreationParams&, Out&, unsigned int);
    using Table = Orv::ModeMetaHelpers2::Despatcher<ProcessSamples, ProcessSamplesTag>;
};

} // namespace LoopModesDespatch
} // namespace Render

/// The host's table of render functions for one output type, indexed by mode code. The library fills it while
/// it is being loaded.
/// \snippet minimal_host.cpp tables
template <class Out>
struct LoopModesDespatcherInstance {
    /// Usable from the first static initialiser on.
    static typename Render::LoopModesDespatch::Types<Out>::Table& get();
};

} // namespace Aud
