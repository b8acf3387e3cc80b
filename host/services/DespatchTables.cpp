#include "contract/DespatchTables.hpp"

#include "host/services/Immortal.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "ole/Orv/OrvModeMeta"

#include <tuple>

namespace Aud {
namespace {

template <class Out>
using Table = typename Render::LoopModesDespatch::Types<Out>::Table;

/// Made at compile time, so that a table is there before the first static initialiser of any library
/// registers its functions. Never destroyed, because libraries look functions up until the process ends.
template <class Out>
constinit audlmd::Immortal<Table<Out>> table;

} // namespace

/// The one table of an output type in the process: libraries register here while they are loaded, and players
/// look up here.
template <class Out>
Table<Out>& LoopModesDespatcherInstance<Out>::get() {
    return table<Out>.object;
}

namespace {

/// The addresses of the accessors of all output types in a list.
template <class OutputTypes>
struct Accessors;
template <class... Out>
struct Accessors<std::tuple<Out...>> {
    static constexpr std::tuple all{&LoopModesDespatcherInstance<Out>::get...};
};

/// The compiler produces and exports an accessor for every address that is kept here. Without the addresses
/// an accessor that this file never calls would not exist, and libraries that register functions could not be
/// loaded.
[[gnu::used]] constexpr auto accessors = Accessors<Render::OutputTypes>::all;

} // namespace
} // namespace Aud
