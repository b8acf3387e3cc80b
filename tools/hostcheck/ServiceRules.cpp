// The rules of loading the renderer: settings, formats, the operating system's services, tables.

#include "contract/LoadServices.hpp"
#include "loop_modes/ModeCode.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "ole/Orv/Exception.hpp"
#include "ole/Orv/OrvModeMeta"
#include "tools/hostcheck/Check.hpp"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <latch>
#include <limits>
#include <memory>
#include <thread>
#include <tuple>
#include <vector>

namespace audlmd {
namespace {

/// Behind all mode codes, so that the renderer's own registrations do not meet it.
constexpr unsigned long testCode = 2000;

template <class Out>
void doNothing(Aud::Render::IteratorCreationParams&, Out&, unsigned int) {}

/// Registers in all tables as the renderer does: from a static initialiser. Returns how many.
template <class... Out>
int registerEverywhere(std::tuple<Out...>*) {
    (Aud::LoopModesDespatcherInstance<Out>::get().registerFunction(testCode, &doNothing<Out>), ...);
    return sizeof...(Out);
}
[[gnu::used]] const int registered = registerEverywhere(static_cast<Aud::Render::OutputTypes*>(nullptr));

template <class Out>
void checkTable(std::vector<const void*>& seen) {
    const auto& table = Aud::LoopModesDespatcherInstance<Out>::get();
    const void* elsewhere = nullptr;
    std::thread([&] { elsewhere = &Aud::LoopModesDespatcherInstance<Out>::get(); }).join();
    expect(elsewhere == &table, "Table ", seen.size(), " is another one on another thread.");
    expect(std::ranges::find(seen, &table) == seen.end(), "Two output types have one table.");
    expect(table.find(testCode) == &doNothing<Out>, "Table ", seen.size(),
           " has lost what was registered while a library was loaded.");
    seen.push_back(&table);
}

template <class... Out>
void checkAllTables(std::tuple<Out...>*) {
    std::vector<const void*> seen;
    (checkTable<Out>(seen), ...);
}

} // namespace

void checkLayout(HostUnderCheck& host) {
    const TypeSize* theirs = host.layout();
    for (const TypeSize& ours : hostLayout) {
        expect(theirs->bytes == ours.bytes, ours.type, " has ", theirs->bytes, " bytes in the host and ",
               ours.bytes, " in the renderer: rebuild the one that has older headers.");
        ++theirs;
    }
}

void checkSettings(HostUnderCheck&) {
    for (const double value : {6.0, -0.25, 1e300}) {
        const double answer = config_double("a setting that nobody has made", value);
        expect(answer == value, "For the default ", value, " the host returns ", answer, ".");
    }
}

void checkFormats(HostUnderCheck&) {
    for (int i = 0; i < 2; ++i) {
        const Orv::Image::FormatUID first(1);
        const Orv::Image::FormatUID second(2);
    }
}

void checkCounts(HostUnderCheck&) {
    iReferenceCounts& counts = OS().referenceCounts();
    std::int32_t count = 1;
    counts.increment(count);
    expect(count == 2, "Counting 1 up gives ", count, ".");
    const std::int32_t left = counts.decrement(count);
    expect(count == 1 && left == 1, "Counting 2 down leaves ", count, ", and returns ", left, ".");
    constexpr int times = 100'000;
    std::latch bothThere(2);
    const auto countUpAndDown = [&] {
        bothThere.arrive_and_wait();
        for (int i = 0; i < times; ++i) {
            counts.increment(count);
            counts.increment(count);
            counts.decrement(count);
        }
    };
    std::thread other(countUpAndDown);
    countUpAndDown();
    other.join();
    expect(count == 2 * times + 1, "Two threads at once count to ", count, " instead of ", 2 * times + 1,
           ".");
}

void checkHeap(HostUnderCheck&) {
    iHeap& heap = OS().heap();
    std::vector<unsigned char*> blocks;
    for (std::size_t bytes = 0; bytes < 200; ++bytes) {
        auto* const block = static_cast<unsigned char*>(heap.allocate(bytes));
        expect(block != nullptr, "Asked for ", bytes, " bytes, the heap returns null.");
        expect(reinterpret_cast<std::uintptr_t>(block) % alignof(std::max_align_t) == 0, "Storage of ", bytes,
               " bytes is not aligned for every type.");
        std::memset(block, static_cast<int>(bytes), bytes);
        blocks.push_back(block);
    }
    for (std::size_t bytes = 0; bytes < blocks.size(); ++bytes) {
        const bool isOwn = std::all_of(blocks[bytes], blocks[bytes] + bytes, [&](unsigned char byte) {
            return byte == static_cast<unsigned char>(bytes);
        });
        expect(isOwn, "Storage of ", bytes, " bytes was given to two.");
        heap.release(blocks[bytes]);
    }
    try {
        heap.allocate(std::numeric_limits<std::size_t>::max() / 2);
    } catch (const std::bad_alloc&) {
        return;
    }
    throw Broken{"Asked for more than there is, the heap does not throw std::bad_alloc."};
}

void checkNotes(HostUnderCheck&) {
    std::unique_ptr<Orv::Exception::RuntimeError> failure;
    try {
        failure = std::make_unique<Orv::Exception::RuntimeError>("a failure", __FILE__, __LINE__);
    } catch (...) {
        throw Broken{"The recorder throws, so that the exception cannot be made."};
    }
    std::size_t characters = 0;
    const ExceptionNotes copies = failure->notes();
    failure.reset();
    for (const LightweightString<char>& note : copies)
        characters += note.view().size();
    expect(characters < 1'000'000, "The notes have ", characters, " characters.");
}

void checkTables(HostUnderCheck&) {
    checkAllTables(static_cast<Aud::Render::OutputTypes*>(nullptr));
}

} // namespace audlmd
