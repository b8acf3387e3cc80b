#pragma once

#include "host/deliver/Delivery.hpp"
#include "tools/audlmd/files/OutputFile.hpp"

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace audlmd::command {

struct Chunk;

/// One of the sound files that a pass writes.
struct SoundOutput {
    OutputTarget target;
    OutputLayout layout;
    Rounding rounding = Rounding::nearest;
    /// The first of its channels in the chunks: several outputs may hold the same ones.
    std::size_t firstChannel = 0;
};

/// The sound files that one pass writes, chunk by chunk. All of them get their names when all are whole, or
/// none does. All failures are CommandErrors that name the file.
class SoundOutputs {
public:
    /// Opens all of them. They have one length. `start` is the place of the first frame on the clock by which
    /// the producer of the chunks dithers.
    explicit SoundOutputs(std::vector<SoundOutput> outputs, std::int64_t start = 0);

    /// Of the chunks: that of the outputs where all have one format and one rounding, else floats that are
    /// not rounded, from which each output is stored.
    const OutputLayout& chunkLayout() const { return chunks_; }
    Rounding chunkRounding() const { return rounding_; }

    /// Appends a chunk.
    void write(const Chunk& chunk);

    /// Gives all files their names, if all of them are whole. Call this once, after the last chunk.
    void commit();

    /// See OutputFile::notes(). After commit().
    std::vector<std::string> notes() const;

private:
    /// The chunk's channels of an output, in the output's format.
    std::vector<const std::byte*> channelsOf(const SoundOutput& output, const Chunk& chunk);

    std::vector<SoundOutput> outputs_;
    std::int64_t start_;
    OutputLayout chunks_;
    Rounding rounding_;
    /// One for each output.
    std::list<OutputFile> files_;
    /// The channels of one output, stored in another format than the chunk's.
    std::vector<std::vector<std::byte>> stored_;
    /// One chunk of one output, with the channels side by side.
    std::vector<std::byte> interleaved_;
};

} // namespace audlmd::command
