#pragma once

#include "host/signal/StripSettings.hpp"
#include "tools/audlmd/files/ChunkWriter.hpp"
#include "tools/audlmd/files/ContainerFile.hpp"

#include <cstddef>
#include <vector>

namespace audlmd::command {

/// A range of a file of 32-bit integers as the chunks of an output, forwards or in reverse. For samples that
/// nothing changes: floats would take 8 bits of them.
class CopiedChunks final : public ChunkProducer {
public:
    /// The file has the format s32, and must outlive this object. Of the settings, only the range and the
    /// direction are looked at.
    CopiedChunks(ContainerFile& file, const StripSettings& settings);

    std::size_t parts() const override { return 1; }
    void fill(std::size_t part, Chunk& chunk) override;

private:
    ContainerFile& file_;
    MaterialSample from_;
    MaterialSample to_;
    bool reverse_;
    std::vector<std::byte> interleaved_;
};

} // namespace audlmd::command
