#pragma once

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

/// The host's table of render functions for one output type, indexed by mode code.
template <class Out>
struct LoopModesDespatcherInstance {
    /// Usable from the first static initialiser on.
    static typename Render::LoopModesDespatch::Types<Out>::Table& get();
};

} // namespace Aud
