#include <host/timeline/TimelineFiles.hpp>

using namespace audlmd::timeline;

/// Reads and writes a timeline. Returns 0 where what is written reads the same.
int main() {
    ReadOptions options;
    options.sampleRate = 44100;
    const audlmd::Timeline read =
        readTimeline(R"({"audlmd": 1, "tracks": [{"strips": [{"media": "a.wav", "to": "1.5s"}]}]})", options);
    const std::string written = writeJson(read);
    return read.length == 66150 && writeJson(readTimeline(written, {})) == written ? 0 : 1;
}
