// The stand-alone host as audlmd-host-check wants it.

#include "host/cache/MaterialCache.hpp"
#include "host/services/Identities.hpp"
#include "host/signal/Automation.hpp"
#include "tools/hostcheck/HostUnderCheck.hpp"

#include <future>
#include <list>
#include <map>

namespace {

using audlmd::CheckedMaterial;

/// Keeps every read waiting until all of the material arrives.
class LateSource final : public audlmd::SampleSource {
public:
    LateSource(audlmd::MemorySource samples, std::shared_future<void> arrival)
        : samples_(std::move(samples)), arrival_(std::move(arrival)) {}
    std::int64_t length() const override { return samples_.length(); }
    void read(std::int64_t position, std::span<float> samples) override {
        arrival_.wait();
        samples_.read(position, samples);
    }

private:
    audlmd::MemorySource samples_;
    std::shared_future<void> arrival_;
};

class StandAloneHost final : public audlmd::HostUnderCheck {
public:
    std::int64_t length() const override { return 2700; }
    CheckedMaterial add(std::span<const float> samples) override {
        return put(std::make_shared<audlmd::MemorySource>(std::vector(samples.begin(), samples.end())));
    }
    std::optional<CheckedMaterial> addLate(std::span<const float> samples) override {
        // Lets the one before arrive, too.
        arrival_ = {};
        return put(std::make_shared<LateSource>(audlmd::MemorySource({samples.begin(), samples.end()}),
                                                arrival_.get_future().share()));
    }
    void load(const CheckedMaterial&) override { arrival_.set_value(); }
    void remove(const CheckedMaterial& material) override { cache_.remove(material.cookie); }
    bool exists(const CheckedMaterial& material) const override {
        return !sources_.at(material.cookie.material.bytes).expired();
    }
    std::uint64_t underruns(const CheckedMaterial& material) const override {
        return cache_.statistics(material.cookie).underrunSamples;
    }
    void placeLevel(LevelState& state, std::span<const audlmd::CheckedLevel> points, std::int64_t position,
                    Aud::Render::DynamicLevelDirection direction) override {
        std::vector<audlmd::LevelNode> nodes;
        for (const auto& point : points)
            nodes.push_back({point.position, point.uValue});
        automations_.emplace_back(std::move(nodes)).place(state, position, direction);
    }

private:
    CheckedMaterial put(std::shared_ptr<audlmd::SampleSource> source) {
        const Cookie cookie{audlmd::makeUuid()};
        sources_[cookie.material.bytes] = source;
        cache_.add(cookie, std::move(source));
        return {&cache_, cookie, ce_handle(cookie)};
    }

    audlmd::MaterialCache cache_{{.segmentLength = 1000}};
    std::promise<void> arrival_;
    std::map<std::array<std::uint8_t, 16>, std::weak_ptr<audlmd::SampleSource>> sources_;
    std::list<audlmd::Automation> automations_;
};

} // namespace

audlmd::HostUnderCheck& audlmd::hostUnderCheck() {
    // Never destroyed: its threads may still wait for samples.
    static auto* const host = new StandAloneHost;
    return *host;
}
