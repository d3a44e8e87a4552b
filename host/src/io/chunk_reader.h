// ChunkReader: the host's load stream over a byte buffer in the host's chunk layout (see ChunkWriter).
// A damaged buffer never makes it read outside the buffer: bad headers and lengths answer IO_ERROR.
#pragma once

#include "ioapi.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace hostrt {

// Where and why the last IO_ERROR of a reader happened. Offsets count from the start of the buffer.
struct ChunkError {
    std::size_t offset = 0;
    std::string what;
    // True when the data ran past the end of the buffer itself (rather than past a parent chunk).
    bool truncated = false;
};

class ChunkReader : public ILoad {
public:
    // Reads from data[0, size); the buffer must outlive the reader. Its top level is a sequence of chunks.
    ChunkReader(const std::uint8_t* data, std::size_t size);

    // IO_OK with the chunk open, IO_END at the end of the current level (the buffer or the open chunk),
    // IO_ERROR when the next header or its length does not fit the current level, or when the open chunk
    // holds data rather than sub-chunks.
    IOResult OpenChunk() override;
    // Id of the open chunk (0 when none is open).
    USHORT CurChunkID() override;
    // Skips what is left of the open chunk; IO_ERROR when no chunk is open.
    IOResult CloseChunk() override;
    // Payload length of the open chunk (0 when none is open).
    ULONG CurChunkLength() override;
    int CurChunkDepth() override { return int(frames_.size()) - 1; }
    // Reads up to the end of the open chunk; fewer bytes than asked for answers IO_ERROR.
    IOResult Read(void* buf, ULONG nbytes, ULONG* nread) override;
    // The rest of the open chunk as a UTF-16LE string (up to its first zero unit). The text stays valid
    // until the reader is destroyed.
    IOResult ReadWStringChunk(MCHAR** buf) override;
    using ILoad::ReadWStringChunk;
    void RegisterPostLoadCallback(PostLoadCallback* cb) override;
    void* GetObjectByRefID(int refID) override { return objects_ ? objects_(refID) : nullptr; }

    // Whether the open chunk is marked as holding sub-chunks.
    bool CurChunkIsContainer() const { return frames_.size() > 1 && frames_.back().container; }
    // Offset in the buffer of the open chunk's header (of the read position when none is open).
    std::size_t CurChunkOffset() const;
    // Offset of the next byte a Read or OpenChunk would take.
    std::size_t Position() const { return frames_.back().cursor; }
    // Bytes left in the open chunk (or at the top level).
    std::size_t Remaining() const { return frames_.back().end - frames_.back().cursor; }
    // The payload of the open chunk (the whole buffer when none is open).
    const std::uint8_t* PayloadData() const { return data_ + frames_.back().begin; }
    std::size_t PayloadSize() const { return frames_.back().end - frames_.back().begin; }

    const ChunkError& LastError() const { return error_; }
    const std::vector<PostLoadCallback*>& PostLoadCallbacks() const { return postLoad_; }
    // Answers the object a file index stands for (ILoad::GetObjectByRefID).
    void SetObjectLookup(std::function<void*(int)> lookup) { objects_ = std::move(lookup); }

private:
    struct Frame {
        USHORT id;
        std::size_t header;  // offset of the chunk header
        std::size_t begin;   // first payload byte
        std::size_t end;     // one past the last payload byte
        std::size_t cursor;  // next byte to read or next sub-chunk header
        bool container;
    };
    IOResult error(std::size_t offset, std::string what, bool truncated = false);

    const std::uint8_t* data_;
    std::size_t size_;
    std::vector<Frame> frames_;  // frames_[0] stands for the whole buffer
    std::deque<std::wstring> strings_;
    std::vector<PostLoadCallback*> postLoad_;
    std::function<void*(int)> objects_;
    ChunkError error_;
};

}  // namespace hostrt
