#include "ole/Aud/SpeedLimit.hpp"

#include "contract/LoadServices.hpp"
#include "loop_modes/UnitPrelude.hpp"

namespace Aud::Render {
namespace {

double configuredSpeedLimit() {
    return config_double("AudioPlaybackSpeedLimit", 6.0);
}

/// Reads the setting again for each comparison, at most three times: each read is visible to the host.
double readSpeedLimit() {
    if (configuredSpeedLimit() > 8.0)
        return 8.0;
    if (configuredSpeedLimit() < 1.5)
        return 1.5;
    return configuredSpeedLimit();
}

class SettingsUnit {
public:
    SettingsUnit() { cfgAudioPlaybackSpeedLimit = readSpeedLimit(); }

private:
    UnitPrelude prelude_;
};

[[gnu::init_priority(initialiserPriority(10))]] const SettingsUnit unit;

} // namespace
} // namespace Aud::Render

constinit double cfgAudioPlaybackSpeedLimit = 6.0;
