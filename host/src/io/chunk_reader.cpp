// The host's load stream: bounds-checked walking of nested chunks over a byte buffer.
#include "io/chunk_reader.h"

#include "io/chunk_writer.h"
#include "io/utf16.h"

#include <cstdio>
#include <cstring>

namespace hostrt {

ChunkReader::ChunkReader(const std::uint8_t* data, std::size_t size) : data_(data), size_(data ? size : 0) {
    frames_.push_back(Frame{0, 0, 0, size_, 0, true});
}

IOResult ChunkReader::error(std::size_t offset, std::string what, bool truncated) {
    error_ = ChunkError{offset, std::move(what), truncated};
    return IO_ERROR;
}

IOResult ChunkReader::OpenChunk() {
    Frame& parent = frames_.back();
    const std::size_t at = parent.cursor;
    if (at >= parent.end) return IO_END;
    const bool atTop = frames_.size() == 1;
    if (!parent.container)
        return error(at, "chunk " + HexChunkId(parent.id) + " holds data, not sub-chunks");
    if (parent.end - at < ChunkWriter::kHeaderSize) {
        if (atTop) return error(size_, "chunk header cut short", true);
        return error(at, "chunk header runs past the end of chunk " + HexChunkId(parent.id));
    }
    const USHORT id = USHORT(data_[at] | (data_[at + 1] << 8));
    std::uint32_t field = 0;
    for (int k = 0; k < 4; ++k) field |= std::uint32_t(data_[at + 2 + std::size_t(k)]) << (8 * k);
    const bool container = (field & ChunkWriter::kContainerBit) != 0;
    const std::size_t length = field & ~ChunkWriter::kContainerBit;
    if (length < ChunkWriter::kHeaderSize)
        return error(at, "chunk " + HexChunkId(id) + " has length " + std::to_string(length) +
                             ", less than its header");
    if (length > parent.end - at) {
        if (atTop) return error(size_, "chunk " + HexChunkId(id) + " runs past the end of the data", true);
        return error(at, "chunk " + HexChunkId(id) + " runs past the end of chunk " + HexChunkId(parent.id));
    }
    frames_.push_back(Frame{id, at, at + ChunkWriter::kHeaderSize, at + length, at + ChunkWriter::kHeaderSize,
                            container});
    return IO_OK;
}

USHORT ChunkReader::CurChunkID() { return frames_.size() > 1 ? frames_.back().id : 0; }

ULONG ChunkReader::CurChunkLength() {
    return frames_.size() > 1 ? ULONG(frames_.back().end - frames_.back().begin) : 0;
}

std::size_t ChunkReader::CurChunkOffset() const {
    return frames_.size() > 1 ? frames_.back().header : frames_.back().cursor;
}

IOResult ChunkReader::CloseChunk() {
    if (frames_.size() <= 1) return error(Position(), "CloseChunk without an open chunk");
    const std::size_t end = frames_.back().end;
    frames_.pop_back();
    frames_.back().cursor = end;
    return IO_OK;
}

IOResult ChunkReader::Read(void* buf, ULONG nbytes, ULONG* nread) {
    if (nread) *nread = 0;
    Frame& f = frames_.back();
    const std::size_t available = f.end - f.cursor;
    const std::size_t n = nbytes < available ? nbytes : available;
    if (n > 0) {
        if (!buf) return error(f.cursor, "Read into a null buffer");
        std::memcpy(buf, data_ + f.cursor, n);
        f.cursor += n;
    }
    if (nread) *nread = ULONG(n);
    if (n < nbytes) {
        const bool atTop = frames_.size() == 1;
        return error(f.cursor, atTop ? "read past the end of the data"
                                     : "read past the end of chunk " + HexChunkId(f.id), atTop);
    }
    return IO_OK;
}

IOResult ChunkReader::ReadWStringChunk(MCHAR** buf) {
    if (buf) *buf = nullptr;
    Frame& f = frames_.back();
    const std::size_t n = f.end - f.cursor;
    if (n % 2 != 0) return error(f.cursor, "string in chunk " + HexChunkId(f.id) + " has an odd number of bytes");
    strings_.push_back(DecodeUtf16LE(data_ + f.cursor, n));
    f.cursor = f.end;
    if (buf) *buf = strings_.back().data();
    return IO_OK;
}

void ChunkReader::RegisterPostLoadCallback(PostLoadCallback* cb) {
    if (cb) postLoad_.push_back(cb);
}

}  // namespace hostrt

IOResult ILoad::ReadWStringChunk(MSTR& str) {
    MCHAR* text = nullptr;
    IOResult r = ReadWStringChunk(&text);
    str = MSTR(text ? text : L"");
    return r;
}
