// The host's in-memory save stream: nested chunks with back-patched lengths.
#include "io/chunk_writer.h"

#include "io/utf16.h"

#include <cstdio>
#include <cstring>

namespace hostrt {

std::string HexChunkId(USHORT id) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "0x%04X", unsigned(id));
    return buf;
}

void ChunkWriter::fail(std::string what) {
    if (error_.empty()) error_ = std::move(what);
}

void ChunkWriter::noteData() {
    if (open_.empty()) {
        topLevelData_ = true;
        return;
    }
    Open& o = open_.back();
    if (o.hasChildren) fail("chunk " + HexChunkId(o.id) + " got data after sub-chunks");
    o.hasData = true;
}

void ChunkWriter::noteChild() {
    if (open_.empty()) {
        topLevelChunks_ = true;
        return;
    }
    Open& o = open_.back();
    if (o.hasData) fail("chunk " + HexChunkId(o.id) + " got a sub-chunk after data");
    o.hasChildren = true;
}

void ChunkWriter::BeginChunk(USHORT id) {
    noteChild();
    open_.push_back(Open{bytes_.size(), id});
    const std::uint8_t header[kHeaderSize] = {std::uint8_t(id & 0xFF), std::uint8_t(id >> 8), 0, 0, 0, 0};
    bytes_.insert(bytes_.end(), header, header + kHeaderSize);
}

void ChunkWriter::EndChunk() {
    if (open_.empty()) {
        fail("EndChunk without an open chunk");
        return;
    }
    Open o = open_.back();
    open_.pop_back();
    std::size_t length = bytes_.size() - o.headerPos;
    if (length > kMaxChunkLength) {
        fail("chunk " + HexChunkId(o.id) + " is longer than 2 GiB");
        length = kMaxChunkLength;
    }
    std::uint32_t field = std::uint32_t(length) | (o.hasChildren ? kContainerBit : 0u);
    for (int k = 0; k < 4; ++k) bytes_[o.headerPos + 2 + std::size_t(k)] = std::uint8_t(field >> (8 * k));
}

IOResult ChunkWriter::Write(const void* buf, ULONG nbytes, ULONG* nwrit) {
    if (nwrit) *nwrit = 0;
    if (nbytes == 0) return IO_OK;
    if (!buf) return IO_ERROR;
    noteData();
    const auto* p = static_cast<const std::uint8_t*>(buf);
    bytes_.insert(bytes_.end(), p, p + nbytes);
    if (nwrit) *nwrit = nbytes;
    return IO_OK;
}

IOResult ChunkWriter::WriteWString(const MCHAR* str) {
    std::vector<std::uint8_t> units;
    AppendUtf16LE(str ? std::wstring_view(str) : std::wstring_view(), units);
    units.push_back(0);
    units.push_back(0);
    ULONG written = 0;
    return Write(units.data(), ULONG(units.size()), &written);
}

void ChunkWriter::WriteSubChunks(const std::vector<std::uint8_t>& chunks) {
    if (chunks.empty()) return;
    noteChild();
    bytes_.insert(bytes_.end(), chunks.begin(), chunks.end());
}

}  // namespace hostrt
