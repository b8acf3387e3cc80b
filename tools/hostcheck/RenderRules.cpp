// The rules that stand on all others: readers side by side, and the render library itself.

#include "loop_modes/ModeCode.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "ole/Aud/SampleEncoding.hpp"
#include "ole/Orv/OrvModeMeta"
#include "tools/hostcheck/Readers.hpp"

#include <atomic>
#include <dlfcn.h>
#include <thread>
#include <tuple>
#include <vector>

namespace audlmd {
namespace {

using Aud::Render::IteratorCreationParams;
using Out = Aud::SampleF32*;

constexpr int readersAtOnce = 4;
constexpr int walksOfEach = 50;

/// Returns whether a walk through all of the material, one reader after the other, finds all samples.
template <class Iterator>
bool findsAll(HostUnderCheck& host, const CheckedMaterial& material) {
    const bool isForward = std::same_as<Iterator, Forward>;
    auto reader = readerFrom<Iterator>(host, material, isForward ? 0 : host.length() - 1);
    bool all = true;
    for (std::int64_t i = 0; i < host.length(); ++i, ++reader)
        all = all && sampleRead(reader) == static_cast<double>(isForward ? i : host.length() - 1 - i);
    return all;
}

/// Throws where one of an output type's modes is missing.
template <class... Type>
void expectAllModes(std::tuple<Type...>*) {
    for (const unsigned long code : Aud::Render::registrationOrder)
        expect(((Aud::LoopModesDespatcherInstance<Type>::get().find(code) != nullptr) && ...), "Mode ", code,
               " is missing in a table.");
}

/// A render call in the mode without any stage.
template <class Iterator>
std::vector<float> rendered(HostUnderCheck& host, const CheckedMaterial& material, std::int64_t first,
                            std::size_t count) {
    constexpr bool isForward = std::same_as<Iterator, Forward>;
    constexpr unsigned long code = Aud::Render::encodeModeCode(
        {.direction = isForward ? Aud::Render::Direction::forward : Aud::Render::Direction::reverse,
         .levelStage = Aud::Render::LevelStage::none,
         .filterStage = Aud::Render::FilterStage::none,
         .srcStage = Aud::Render::ConversionStage::none,
         .envelopeStage = 0,
         .dynamicLevelDirection = Aud::Render::DynamicLevelDirection::reverse});
    Aud::Render::PerSourceRecord record;
    record.strip = material.strip;
    // The library itself adds one to the position of a reverse reader.
    const std::int64_t position = isForward ? first : host.reversePosition(first) - 1;
    const bool flag = IteratorInside::waits(makeReader<Iterator>(material, first, true));
    constexpr std::uint32_t ahead = 0;
    const Orv::OutputGearing gearing{};
    IteratorCreationParams call{.source = &record,
                                .startPosition = &position,
                                .requestFlag = &flag,
                                .forwardArgument = &ahead,
                                .gearing = &gearing,
                                .cache = material.cache};
    std::vector<Aud::SampleF32> containers(count);
    Out out = containers.data();
    Aud::LoopModesDespatcherInstance<Out>::get().find(code)(call, out, static_cast<unsigned int>(count));
    std::vector<float> samples;
    for (const Aud::SampleF32& container : containers)
        samples.push_back(Aud::SampleEncoding<Aud::SampleF32>::load(container));
    return samples;
}

/// Compares a render call, from just inside to beyond the end, with what a reader of the check reads there.
template <class Iterator>
void checkCall(HostUnderCheck& host, const CheckedMaterial& material) {
    const std::int64_t first = std::same_as<Iterator, Forward> ? 1 : host.length() - 2;
    const auto count = static_cast<std::size_t>(host.length());
    const std::vector<float> samples = rendered<Iterator>(host, material, first, count);
    auto reader = readerFrom<Iterator>(host, material, first);
    for (std::size_t i = 0; i < count; ++i, ++reader)
        expect(samples[i] == *reader, "Sample ", i, " of a ", nameOf<Iterator>, " render call is ",
               samples[i], ", and a reader reads ", *reader, ".");
}

} // namespace

void checkTogether(HostUnderCheck& host) {
    const auto samples = ramp(host);
    const CheckedMaterial material = host.add(samples);
    std::atomic<int> wrong{0};
    std::vector<std::jthread> threads;
    for (int number = 0; number < readersAtOnce; ++number)
        threads.emplace_back([&, number] {
            for (int walk = 0; walk < walksOfEach; ++walk)
                wrong +=
                    number % 2 == 0 ? !findsAll<Forward>(host, material) : !findsAll<Reverse>(host, material);
        });
    threads.clear();
    expect(wrong == 0, wrong.load(), " of ", readersAtOnce * walksOfEach, " walks on ", readersAtOnce,
           " threads at once find other samples than one walk alone.");
}

void checkRender(HostUnderCheck& host) {
    if (dlopen(AUDLMD_RENDER_LIBRARY, RTLD_NOW) == nullptr)
        throw Unchecked{inWords("The render library is not there: ", dlerror())};
    expectAllModes(static_cast<Aud::Render::OutputTypes*>(nullptr));
    const auto samples = ramp(host);
    const CheckedMaterial material = host.add(samples);
    CheckedMaterial unknown = material;
    unknown.cookie.channel = 60'000;
    unknown.strip = ce_handle(unknown.cookie);
    for (int i = 0; i < 2; ++i) {
        checkCall<Forward>(host, material);
        checkCall<Reverse>(host, material);
        try {
            rendered<Forward>(host, unknown, 1, 1);
        } catch (...) {
            // A host may refuse: the exception has passed through the library.
        }
    }
    host.remove(material);
    expect(!host.exists(material),
           "After render calls, one of which the host may refuse, samples of a removed material "
           "are still held.");
}

} // namespace audlmd
