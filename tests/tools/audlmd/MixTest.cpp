#include "tests/tools/audlmd/CommandFixture.hpp"

namespace audlmd::test {
namespace {

class MixCommand : public CommandFixture {};

TEST_F(MixCommand, ListsAnOtioFileAndItsOwnJsonAlike) {
    writeSound(in("a.wav"), noise(1, 96'000));
    writeBytes(in("film.otio"), R"({"OTIO_SCHEMA": "Timeline.1", "name": "film", "tracks": {
        "OTIO_SCHEMA": "Stack.1", "children": [{"OTIO_SCHEMA": "Track.1", "name": "A1", "kind": "Audio",
        "children": [{"OTIO_SCHEMA": "Clip.1", "name": "door", "media_reference":
            {"OTIO_SCHEMA": "ExternalReference.1", "target_url": "a.wav"}}]}]}})");
    const std::string table = output("mix film.otio --list");
    EXPECT_NE(table.find("door  0:00:00.000 - 0:00:02.000"), std::string::npos) << table;
    writeBytes(in("film.json"), output("mix film.otio --list --as json"));
    EXPECT_EQ(output("mix film.json --list"), table);
}

TEST_F(MixCommand, RefusesWhatIsNoTimeline) {
    writeBytes(in("text.otio"), "tracks: 2");
    expectRefused("mix text.otio --list", "JSON");
    expectRefused("mix none.otio --list", "No such file");
    expectRefused("mix . --list", "Is a directory");
}

} // namespace
} // namespace audlmd::test
