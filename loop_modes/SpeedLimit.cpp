#include "ole/Aud/SpeedLimit.hpp"

#include "host/Configuration.hpp"
#include "loop_modes/UnitPrelude.hpp"

namespace Aud::Render {
namespace {

double configuredSpeedLimit() {
    return config_double("AudioPlaybackSpeedLimit", 6.0);
}

/// The setting is read again for each comparison, as the host's settings always are.
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
