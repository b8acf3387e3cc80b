#include "host/DespatchTables.hpp"

#include "loop_modes/OutputTypes.hpp"
#include "ole/Orv/OrvModeMeta"
#include "standalone/services/Immortal.hpp"

namespace Aud {
namespace {

template <class Out>
using Table = typename Render::LoopModesDespatch::Types<Out>::Table;

/// Made at compile time: there before the first static initialiser of any library.
template <class Out>
constinit audlmd::Immortal<Table<Out>> table;

} // namespace

template <class Out>
Table<Out>& LoopModesDespatcherInstance<Out>::get() {
    return table<Out>.object;
}

template struct LoopModesDespatcherInstance<SampleF32*>;
template struct LoopModesDespatcherInstance<SampleS16*>;
template struct LoopModesDespatcherInstance<SampleS24*>;
template struct LoopModesDespatcherInstance<SampleS8*>;
template struct LoopModesDespatcherInstance<SampleU8*>;
template struct LoopModesDespatcherInstance<SampleS24In32*>;
template struct LoopModesDespatcherInstance<SampleS32*>;
template struct LoopModesDespatcherInstance<Render::Summing<SampleF32*>>;
template struct LoopModesDespatcherInstance<Render::Summing<SampleS16*>>;
template struct LoopModesDespatcherInstance<Render::Summing<SampleS24*>>;
template struct LoopModesDespatcherInstance<Render::Summing<SampleS8*>>;
template struct LoopModesDespatcherInstance<Render::Summing<SampleU8*>>;
template struct LoopModesDespatcherInstance<Render::Summing<SampleS24In32*>>;
template struct LoopModesDespatcherInstance<Render::Summing<SampleS32*>>;

} // namespace Aud
