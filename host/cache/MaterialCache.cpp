#include "host/cache/MaterialCache.hpp"

#include "host/cache/CacheCore.hpp"
#include "host/services/Identities.hpp"
#include "host/services/Threads.hpp"

namespace audlmd {

UnknownMaterial::UnknownMaterial(const Cookie& cookie)
    : std::out_of_range("the sample cache holds no material " + toString(cookie)) {}

MaterialCache::MaterialCache(const MaterialCacheOptions& options)
    : core_(std::make_shared<CacheCore>(options)) {
    for (unsigned int i = 0; i < options.loaderThreads; ++i)
        loaders_.push_back(namedThread(
            "audlmd-loader", [core = core_.get()](const std::stop_token& stop) { core->serve(stop); }));
}

MaterialCache::~MaterialCache() {
    // Readers may wait for segments that the loaders, which end next, will never load.
    core_->close();
}

void MaterialCache::callOff() {
    core_->callOff();
}

void MaterialCache::add(const Cookie& cookie, std::shared_ptr<SampleSource> source) {
    core_->add(cookie, std::move(source));
}

MaterialStatistics MaterialCache::remove(const Cookie& cookie) {
    return core_->remove(cookie);
}

Aud::SampleCacheSegment MaterialCache::request(const Cookie& cookie, std::int64_t sample,
                                               Aud::Render::Direction direction,
                                               const Orv::OutputGearing& gearing, std::uint32_t held) {
    const std::uint32_t reach = core_->reach(gearing, held);
    return core_->stand(cookie, sample, {direction, reach, {}}).segment;
}

MaterialStatistics MaterialCache::statistics(const Cookie& cookie) const {
    return core_->statistics(cookie);
}

MaterialCacheUsage MaterialCache::usage() const {
    return core_->usage();
}

} // namespace audlmd
