#include "host/cache/FilmContainer.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace audlmd::test {
namespace {

using namespace std::string_literals;

TEST(FilmContainer, IsKnownByItsFirstBytes) {
    const std::filesystem::path path =
        testing::TempDir() + "audlmd-film-container-" + std::to_string(getpid());
    for (const auto& [start, isFilm] :
         std::vector<std::pair<std::string, bool>>{{"....ftyp", true},
                                                   {"....moov", true},
                                                   {"....mdat", true},
                                                   {"....wide", true},
                                                   {"RIFF....AVI ", true},
                                                   {"\x1A\x45\xDF\xA3", true},
                                                   {"\x06\x0E\x2B\x34", true},
                                                   {"\x00\x00\x01\xBA"s, true},
                                                   {"\x00\x00\x01\xB3"s, true},
                                                   {"\x30\x26\xB2\x75", true},
                                                   {"FLV\x01", true},
                                                   {"RIFF....WAVE", false},
                                                   {"LIST....AVI ", false},
                                                   {"...ftyp", false},
                                                   {".\x1A\x45\xDF\xA3", false}}) {
        std::ofstream(path, std::ios::binary) << start << std::string(16, 'x');
        EXPECT_EQ(isFilmContainer(path), isFilm) << start;
    }
    std::filesystem::remove(path);
}

} // namespace
} // namespace audlmd::test
