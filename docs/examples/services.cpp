#include <contract/LoadServices.hpp>
#include <host/services/Configuration.hpp>
#include <host/services/Event.hpp>
#include <host/services/Identities.hpp>
#include <host/services/RenderFunctions.hpp>
#include <host/services/SampleRates.hpp>
#include <host/services/Threads.hpp>
#include <ole/Orv/LightweightString.hpp>

#undef NDEBUG
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <fstream>

using namespace audlmd;

static void configure() {
    //! [configuration]
    std::ofstream("settings.conf") << "AudioPlaybackSpeedLimit = 4 # times\n";
    const Configuration settings("settings.conf");
    assert(settings.number("AudioPlaybackSpeedLimit", 6.0) == 4.0);
    assert(settings.number("NobodySetThis", 0.5) == 0.5);

    setenv(Configuration::environmentName("AudioPlaybackSpeedLimit").c_str(), "2", 1); // counts before the file
    assert(settings.number("AudioPlaybackSpeedLimit", 6.0) == 2.0);
    for (const auto& [key, place] : settings.keysOfFile())
        if (!settings.askedFor().contains(key))
            std::printf("%s: '%s' has no effect\n", place.c_str(), key.c_str());
    std::printf("the user's file: %s\n", Configuration::userFile().c_str());
    //! [configuration]
    assert(config_double("AudioPlaybackSpeedLimit", 6.0) == userConfiguration().number("AudioPlaybackSpeedLimit", 6.0));
}

//! [threads]
class Counter {
public:
    void add() {
        const Lock lock(mutex_);
        ++count_;
    }
    int count() const {
        const Lock lock(mutex_);
        return count_;
    }

private:
    mutable Mutex mutex_;
    int count_ AUDLMD_GUARDED_BY(mutex_) = 0; // clang++ refuses an access without the lock
};
//! [threads]

static void wait() {
    //! [event]
    Counter counter;
    const EventPtr loaded(new Event);
    const std::jthread loader = namedThread("loader", [&, loaded](const std::stop_token&) {
        counter.add();
        loaded->signal();
    });
    assert(loaded->wait(iThreadEvent::noTimeLimit) && counter.count() == 1);
    assert(loaded->wait(0)); // stays signalled
    //! [event]
}

static void identify() {
    //! [identity]
    const Orv::UUID recording = makeUuid(); // one for all its channels
    const Cookie right{.material = recording, .channel = 1};
    assert(toString(recording).size() == 36 && right != Cookie{});
    assert(ce_handle(right).get_strip_cookie() == right);
    std::puts(toString(right).c_str()); // for messages
    //! [identity]
}

static void find() {
    //! [functions]
    constexpr unsigned long code = 1024; // forwards, no other stage
    const auto render = renderFunction<Aud::SampleS16*>(code);
    assert(render == findRenderFunction<Aud::SampleS16*>(code) && findRenderFunction<Aud::SampleF32*>(4711) == nullptr);
    try {
        (void)renderFunction<Aud::SampleS16*>(4711);
        assert(false);
    } catch (const NoSuchMode& error) {
        assert(error.code() == 4711 && error.what() == whyNoSuchMode(4711));
    }
    //! [functions]
}

int main() {
    //! [rates]
    static_assert(lowestSampleRate <= 48000 && 48000 <= highestSampleRate);
    //! [rates]

    //! [string]
    const LightweightString<char> name(std::string_view("take 1"));
    const LightweightString<char> same = name; // one body, which the host counts
    assert(same.view().data() == name.view().data());
    //! [string]
    configure();
    wait();
    identify();
    find();
}
