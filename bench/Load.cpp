// audlmd-bench-load LIBRARY: loads the library and prints how long it took, in nanoseconds, and how many
// render functions it registered. A process measures one load, because later loads find the
// library in memory.

#include "bench/Report.hpp"
#include "contract/DespatchTables.hpp"
#include "model/OutputTypes.hpp"
#include "ole/Orv/OrvModeMeta"

#include <cstddef>
#include <cstdio>
#include <dlfcn.h>
#include <tuple>

namespace {

template <class Out>
std::size_t countFunctions() {
    const auto& table = Aud::LoopModesDespatcherInstance<Out>::get();
    std::size_t count = 0;
    for (unsigned long code = 0; code < table.size(); ++code)
        count += table.find(code) != nullptr ? 1 : 0;
    return count;
}

template <class... Outs>
std::size_t countAllFunctions(std::tuple<Outs...>*) {
    return (countFunctions<Outs>() + ...);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "audlmd-bench-load: takes one argument, the library to load\n");
        return 2;
    }
    void* library = nullptr;
    audlmd::bench::Timing loading;
    loading.repeat([&] { library = dlopen(argv[1], RTLD_NOW | RTLD_GLOBAL); });
    if (library == nullptr) {
        std::fprintf(stderr, "audlmd-bench-load: %s\n", dlerror());
        return 1;
    }
    std::printf("%.0f %zu\n", loading.minimum(),
                countAllFunctions(static_cast<audlmd::model::OutputTypes*>(nullptr)));
}
