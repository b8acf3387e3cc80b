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
                           unsigned int count, OutputWatch* watch);

/// The output of one call. Its end moves the caller's position, also when the call throws.
template <class Out>
class Output {
public:
    Output(std::uint8_t*& position, OutputWatch* watch)
        : out(OutputAt<Out>::make(position)), position_(position), watch_(watch) {
        if (watch_ != nullptr)
            *watch_ = {&out, [](const void* watched) -> const std::uint8_t* {
                           return OutputAt<Out>::where(*static_cast<const Out*>(watched));
                       }};
    }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    ~Output() {
        position_ = OutputAt<Out>::where(out);
        if (watch_ != nullptr)
            *watch_ = {};
    }

    Out out;

private:
    std::uint8_t*& position_;
    OutputWatch* watch_;
};

template <class Out>
void renderInto(unsigned int code, IteratorCreationParams& params, std::uint8_t*& position,
                unsigned int count, OutputWatch* watch) {
    const auto function = Aud::LoopModesDespatcherInstance<Out>::get().find(code);
    if (function == nullptr)
        throw std::out_of_range("the despatch table has no function for code " + std::to_string(code));
    Output<Out> output(position, watch);
    function(params, output.out, count);
}

constexpr auto renderers = []<std::size_t... Number>(std::index_sequence<Number...>) {
    return std::array<RenderAny, outputTypeCount>{&renderInto<std::tuple_element_t<Number, OutputTypes>>...};
}
(std::make_index_sequence<outputTypeCount>());

} // namespace

void renderThroughTable(std::size_t outputType, unsigned int code, IteratorCreationParams& params,
                        std::uint8_t*& position, unsigned int count, OutputWatch* watch) {
    renderers[outputType](code, params, position, count, watch);
}

} // namespace audlmd::model
