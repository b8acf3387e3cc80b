#include <standalone/cache/MaterialCache.hpp>
#include <standalone/services/Identities.hpp>
#include <standalone/signal/StripPlayer.hpp>

#include <bit>
#include <cstdio>

int main() {
    const Cookie cookie{.material = audlmd::makeUuid()};
    audlmd::MaterialCache cache;
    cache.add(cookie, std::make_shared<audlmd::MemorySource>(std::vector{0.25F, -0.5F, 1.0F}));

    audlmd::StripPlayer player(cache, {.cookie = cookie, .from = 0, .to = 3, .reverse = true});
    Aud::SampleS16 samples[3];
    Aud::SampleS16* out = samples;
    player.render(out, player.outputLength());

    for (const Aud::SampleS16& sample : samples)
        std::printf("%d\n", std::bit_cast<std::int16_t>(sample.bytes)); // 32767, -16384, 8192
}
