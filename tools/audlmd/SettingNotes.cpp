#include "tools/audlmd/SettingNotes.hpp"

#include "host/services/Configuration.hpp"
#include "host/signal/VectorWidth.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"
#include "ole/Aud/SpeedLimit.hpp"
#include "tools/audlmd/Hint.hpp"

#include <algorithm>
#include <set>
#include <string_view>
#include <unistd.h>

namespace audlmd::command {
namespace {

std::string meant(const std::string& key, const std::vector<std::string>& known) {
    const std::string word = nearest(key, known);
    return word.empty() ? "" : "; did you mean " + word + "?";
}

/// Of other variables that begin so nobody knows whose they are.
void addMisspeltVariables(std::vector<std::string>& notes, const std::vector<std::string>& variables) {
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string_view text(*variable);
        const std::string name(text.substr(0, text.find('=')));
        if (name.starts_with(Configuration::environmentName("")) && std::ranges::count(variables, name) == 0)
            if (const std::string hint = meant(name, variables); !hint.empty())
                notes.push_back("note: the environment variable " + words::printable(name) +
                                " is no setting" + hint);
    }
}

} // namespace

std::vector<std::string> settingNotes() {
    const Configuration& configuration = userConfiguration();
    const std::set<std::string> asked = configuration.askedFor();
    const std::vector<std::string> known(asked.begin(), asked.end());
    std::vector<std::string> notes;
    for (const auto& [key, place] : configuration.keysOfFile())
        if (!asked.contains(key))
            notes.push_back("note: " + words::printable(place, std::string::npos) + ": " +
                            words::quoted(key) + " is no setting" + meant(key, known));
    std::vector<std::string> variables{"AUDLMD_CONFIG"};
    for (const std::string& key : known)
        variables.push_back(Configuration::environmentName(key));
    addMisspeltVariables(notes, variables);
    const auto addUnlessInForce = [&](const std::string& key, double inForce, const std::string& why) {
        if (const double wanted = configuration.number(key, inForce); wanted != inForce)
            notes.push_back("note: the setting " + key + " is " + words::numberText(wanted) + ", but " +
                            words::numberText(inForce) + " is the nearest that " + why);
    };
    addUnlessInForce("AudioPlaybackSpeedLimit", cfgAudioPlaybackSpeedLimit, "can be played");
    addUnlessInForce("VectorBits", vectorBits(), "this processor has");
    return notes;
}

} // namespace audlmd::command
