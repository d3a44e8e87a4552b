// ChunkWriter: the host's save stream. Writes nested chunks into memory in the host's chunk layout
// (little-endian: u16 id, u32 length of the whole chunk with the header, top bit set when it holds sub-chunks).
#pragma once

#include "ioapi.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace hostrt {

// A chunk id as error messages print it: "0x0027".
std::string HexChunkId(USHORT id);

class ChunkWriter : public ISave {
public:
    static constexpr std::size_t kHeaderSize = 6;
    static constexpr std::uint32_t kContainerBit = 0x80000000u;
    static constexpr std::uint32_t kMaxChunkLength = 0x7FFFFFFFu;

    void BeginChunk(USHORT id) override;
    // Closes the innermost chunk and writes its length into its header. Without an open chunk it only
    // records a misuse (see Error()).
    void EndChunk() override;
    IOResult Write(const void* buf, ULONG nbytes, ULONG* nwrit) override;
    IOResult WriteWString(const MCHAR* str) override;
    using ISave::WriteWString;
    int GetRefID(void* ptarg) override { return refIds_ ? refIds_(ptarg) : -1; }
    int CurChunkDepth() override { return int(open_.size()); }

    // Appends a finished sequence of chunks (the bytes of another writer) as sub-chunks of the open chunk.
    void WriteSubChunks(const std::vector<std::uint8_t>& chunks);

    // Answers the index a target has in the file being written (ISave::GetRefID).
    void SetRefIdLookup(std::function<int(void*)> lookup) { refIds_ = std::move(lookup); }

    const std::vector<std::uint8_t>& Bytes() const { return bytes_; }
    // The first misuse seen (a chunk holding both data and sub-chunks, EndChunk without a chunk, a chunk
    // longer than the layout can say), empty when none.
    const std::string& Error() const { return error_; }
    // True when at least one chunk was written outside every other chunk.
    bool HasTopLevelChunks() const { return topLevelChunks_; }
    // True when bytes were written outside every chunk.
    bool HasTopLevelData() const { return topLevelData_; }

private:
    struct Open {
        std::size_t headerPos;
        USHORT id;
        bool hasChildren = false;
        bool hasData = false;
    };
    void fail(std::string what);
    void noteData();
    void noteChild();

    std::vector<std::uint8_t> bytes_;
    std::vector<Open> open_;
    std::function<int(void*)> refIds_;
    std::string error_;
    bool topLevelChunks_ = false;
    bool topLevelData_ = false;
};

}  // namespace hostrt
