// The minimal host as audlmd-host-check wants it. See hosts.md.
#include "minimal_host.cpp" // NOLINT: one file to compile
#include "tools/hostcheck/HostUnderCheck.hpp"

#include <list>

using audlmd::CheckedMaterial;

/// What a host does once before the first render call: the level at a position, and on from there.
void placeLevel(Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState& state,
                const std::vector<HostStorage::LevelNode>& nodes, std::int64_t position, bool forwards) {
    const auto isBefore = [](const HostStorage::LevelNode& n, std::int64_t p) { return n.position < p; };
    const auto after = std::lower_bound(nodes.begin(), nodes.end(), position + forwards, isBefore) - nodes.begin();
    const auto& left = nodes[static_cast<std::size_t>(std::max<std::ptrdiff_t>(after - 1, 0))];
    const auto& right = nodes[static_cast<std::size_t>(std::min(after, std::ssize(nodes) - 1))];
    const auto length = static_cast<float>(right.position - left.position);
    const auto part = length == 0 ? 0 : static_cast<float>(position - left.position) / length;
    state.uValue = left.uValue + part * (right.uValue - left.uValue);
    state.host = {nodes.data(), static_cast<std::uint32_t>(nodes.size()),
                  static_cast<std::uint32_t>(forwards ? after : after - 1), position};
    Aud::DynamicLevelControl::loadRamp(state, forwards ? 1U : ~0U);
}

//! [host]
class MinimalHost final : public audlmd::HostUnderCheck {
public:
    /// Three segments of 1,000 samples, the last one shorter.
    std::int64_t length() const override { return 2700; }

    CheckedMaterial add(std::span<const float> samples) override {
        auto material = std::make_shared<Material>();
        material->samples.assign(samples.begin(), samples.end());
        all_.push_back(material);
        cache_.materials.push_back(std::move(material));
        const Cookie cookie{{}, static_cast<std::uint16_t>(all_.size() - 1)};
        return {&cache_, cookie, ce_handle(cookie)};
    }
    std::optional<CheckedMaterial> addLate(std::span<const float> samples) override {
        const CheckedMaterial late = add(samples);
        cache_.materials.back()->status = Aud::eSegmentRequestOutstanding;
        return late;
    }
    void load(const CheckedMaterial& late) override {
        Material& material = *cache_.materials[late.cookie.channel];
        material.status = Aud::eSegmentReady;
        material.event->signal.set_value();
    }
    void remove(const CheckedMaterial& material) override { cache_.materials[material.cookie.channel].reset(); }
    bool exists(const CheckedMaterial& material) const override { return !all_[material.cookie.channel].expired(); }
    std::uint64_t underruns(const CheckedMaterial& material) const override {
        return cache_.materials[material.cookie.channel]->underruns;
    }

    void placeLevel(LevelState& state, std::span<const audlmd::CheckedLevel> points, std::int64_t position,
                    Aud::Render::DynamicLevelDirection direction) override {
        std::vector<HostStorage::LevelNode>& nodes = levels_.emplace_back();
        for (const auto& point : points)
            nodes.push_back({point.position, point.uValue});
        ::placeLevel(state, nodes, position, direction == Aud::Render::DynamicLevelDirection::forwards);
    }

private:
    Aud::MemoryCache cache_;
    std::vector<std::weak_ptr<Material>> all_;
    std::list<std::vector<HostStorage::LevelNode>> levels_;
};

audlmd::HostUnderCheck& audlmd::hostUnderCheck() {
    static MinimalHost host;
    return host;
}
//! [host]
