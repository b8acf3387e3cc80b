#include "host/mix/Media.hpp"

#include "host/cache/SoundFile.hpp"

namespace audlmd {

Media openSoundFile(const std::string& path) {
    const auto file = std::make_shared<SoundFile>(path);
    Media media{.channels = {}, .sampleRate = file->sampleRate()};
    for (int channel = 0; channel < file->channels(); ++channel)
        media.channels.push_back(std::make_shared<SoundFileSource>(file, channel));
    return media;
}

} // namespace audlmd
