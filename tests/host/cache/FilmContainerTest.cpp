#include "host/cache/FilmContainer.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <unistd.h>
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

TEST(FilmContainer, IsNamedInAdviceByWordsThatATerminalShowsAsTheyAre) {
    for (const auto& [name, word] : std::vector<std::pair<std::string, std::string>>{
             {"a b", "'a b'"},
             {"it's", "'it'\\''s'"},
             {"-a", "'./-a'"},
             {"\x1F ~\xC3\xA9'\\", R"($'\037 ~\303\251\047\134')"},
             {"\x7F", R"($'\177')"},
             {"\xC2\x9F", R"($'\302\237')"},
             {"\xC2\xA0", "'\xC2\xA0'"},
             {"\xD8\x9C", R"($'\330\234')"},
             {"\xD8\x9B\xE2\x80\x8D\xE2\x80\x90", "'\xD8\x9B\xE2\x80\x8D\xE2\x80\x90'"},
             {"\xE2\x80\x8E", R"($'\342\200\216')"},
             {"\xE2\x80\x8F", R"($'\342\200\217')"},
             {"\xE2\x80\xA8", R"($'\342\200\250')"},
             {"\xE2\x80\xAE", R"($'\342\200\256')"},
             {"\xE2\x80\xA7\xE2\x80\xAF", "'\xE2\x80\xA7\xE2\x80\xAF'"},
             {"\xE2\x81\xA6", R"($'\342\201\246')"},
             {"\xE2\x81\xA9", R"($'\342\201\251')"},
             {"\xE2\x81\xA5\xE2\x81\xAA\xE3\x80\x8E", "'\xE2\x81\xA5\xE2\x81\xAA\xE3\x80\x8E'"}})
        EXPECT_THAT(filmContainerAdvice(name), testing::HasSubstr("-i " + word + " -vn"));
}

} // namespace
} // namespace audlmd::test
