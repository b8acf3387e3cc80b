#include "tools/audlmd/files/Outputs.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/plot/Figure.hpp"

#include <algorithm>
#include <unistd.h>

namespace audlmd::command {

Outputs::Outputs(const std::vector<std::filesystem::path>& sounds, const FileKind* kind,
                 std::initializer_list<std::filesystem::path> others) {
    for (const std::filesystem::path& sound : sounds)
        if (!sound.empty())
            all_.push_back(sounds_.emplace_back(sound, kind));
    for (const std::filesystem::path& other : others)
        if (!other.empty())
            all_.emplace_back(other);
    requireDistinct(all_);
}

std::vector<OutputTarget> Outputs::add(const std::vector<std::filesystem::path>& sounds,
                                       const FileKind& kind) {
    std::vector<OutputTarget> added;
    for (const std::filesystem::path& sound : sounds)
        all_.push_back(added.emplace_back(sound, &kind));
    requireDistinct(all_);
    return added;
}

std::string Outputs::soundNames() const {
    std::string names;
    for (const OutputTarget& sound : sounds_)
        names += (names.empty()               ? "'"
                  : &sound == &sounds_.back() ? " and '"
                                              : ", '") +
                 words::printable(sound.path.string()) + "'";
    return names;
}

FILE* Outputs::report() const {
    const bool taken =
        std::ranges::any_of(sounds_, [](const OutputTarget& sound) { return sound.isStream; }) ||
        std::ranges::any_of(all_, [](const OutputPath& output) { return output.inherited == STDOUT_FILENO; });
    return taken ? stderr : stdout;
}

void Outputs::requireOther(const std::filesystem::path& input, const std::string& what) const {
    for (const OutputPath& output : all_)
        command::requireOther(output, input, what);
}

plot::PictureKind pictureKindOf(const std::filesystem::path& path) {
    if (path.extension() == ".png")
        return plot::PictureKind::png;
    if (path.extension() == ".svg")
        return plot::PictureKind::svg;
    throw CommandError("'" + path.string() +
                       "': the extension names the kind of picture to write; use .png or .svg");
}

void writePicture(const plot::Figure& figure, const OutputPath& target) {
    writeOutput(target, plot::drawFigure(figure, pictureKindOf(target.path)));
}

} // namespace audlmd::command
