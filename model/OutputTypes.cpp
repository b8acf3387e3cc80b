#include "model/OutputTypes.hpp"

#include "ole/Orv/OrvModeMeta"

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

namespace audlmd::model {
namespace {

using Aud::Render::IteratorCreationParams;

/// Makes an output type from a position in the buffer, and asks the output type for its position.
template <class Out>
struct OutputAt;

template <class Sample>
struct OutputAt<Sample*> {
    // NOLINTNEXTLINE(readability-non-const-parameter): the result is written through
    static Sample* make(std::uint8_t* position) { return reinterpret_cast<Sample*>(position); }
    static std::uint8_t* where(Sample* out) { return reinterpret_cast<std::uint8_t*>(out); }
};

template <class Sample>
struct OutputAt<Summing<Sample>> {
    // NOLINTNEXTLINE(readability-non-const-parameter): likewise
    static Summing<Sample> make(std::uint8_t* position) {
        return Summing<Sample>(reinterpret_cast<Sample*>(position));
    }
    static std::uint8_t* where(const Summing<Sample>& out) {
        return reinterpret_cast<std::uint8_t*>(out.position());
    }
};

using RenderAny = void (*)(unsigned int code, IteratorCreationParams& params, std::uint8_t*& position,
                           unsigned int count);

template <class Out>
void renderInto(unsigned int code, IteratorCreationParams& params, std::uint8_t*& position,
                unsigned int count) {
    const auto function = Aud::LoopModesDespatcherInstance<Out>::get().find(code);
    if (function == nullptr)
        throw std::out_of_range("the despatch table has no function for code " + std::to_string(code));
    Out out = OutputAt<Out>::make(position);
    try {
        function(params, out, count);
    } catch (...) {
        position = OutputAt<Out>::where(out);
        throw;
    }
    position = OutputAt<Out>::where(out);
}

constexpr auto renderers = []<std::size_t... Number>(std::index_sequence<Number...>) {
    return std::array<RenderAny, outputTypeCount>{&renderInto<std::tuple_element_t<Number, OutputTypes>>...};
}
(std::make_index_sequence<outputTypeCount>());

} // namespace

void renderThroughTable(std::size_t outputType, unsigned int code, IteratorCreationParams& params,
                        std::uint8_t*& position, unsigned int count) {
    renderers[outputType](code, params, position, count);
}

} // namespace audlmd::model
