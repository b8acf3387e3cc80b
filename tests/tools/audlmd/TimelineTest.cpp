#include "tests/tools/audlmd/CommandFixture.hpp"

namespace audlmd::test {
namespace {

class TimelineCommand : public CommandFixture {};

TEST_F(TimelineCommand, ListsAnOtioFileAndItsOwnJsonAlike) {
    writeSound(in("a.wav"), noise(1, 96'000));
    writeBytes(in("film.otio"), R"({"OTIO_SCHEMA": "Timeline.1", "name": "film", "tracks": {
        "OTIO_SCHEMA": "Stack.1", "children": [{"OTIO_SCHEMA": "Track.1", "name": "A1", "kind": "Audio",
        "children": [{"OTIO_SCHEMA": "Clip.1", "name": "door", "media_reference":
            {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "a.wav"}}]}]}})");
    const std::string table = output("timeline film.otio");
    EXPECT_NE(table.find("door  0:00:00.000 - 0:00:02.000"), std::string::npos) << table;
    writeBytes(in("film.json"), output("timeline film.otio --as json"));
    EXPECT_EQ(output("timeline film.json"), table);
}

TEST_F(TimelineCommand, RefusesWhatIsNoTimeline) {
    writeBytes(in("text.otio"), "tracks: 2");
    expectRefused("timeline text.otio", "JSON");
    expectRefused("timeline none.otio", "No such file");
    expectRefused("timeline .", "Is a directory");
}

} // namespace
} // namespace audlmd::test
