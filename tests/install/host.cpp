#include <host/cache/MaterialCache.hpp>
#include <host/services/Identities.hpp>
#include <host/signal/StripPlayer.hpp>

#include <array>
#include <cstdio>

int main() {
    const Cookie cookie{.material = audlmd::makeUuid()};
    audlmd::MaterialCache cache;
    cache.add(cookie, std::make_shared<audlmd::MemorySource>(std::vector{0.25F, -0.5F, 1.0F}));

    audlmd::StripPlayer player(cache, {.cookie = cookie, .from = 0, .to = 3, .reverse = true});
    std::array<std::int16_t, 3> samples{};
    player.render(samples);

    for (const std::int16_t sample : samples)
        std::printf("%d\n", sample); // 32767, -16384, 8192
}
