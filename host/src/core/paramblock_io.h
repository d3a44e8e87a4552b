// Little-endian field packing for the chunks parameter blocks save: a writer that collects one chunk's
// payload and a reader over a chunk read whole.
#pragma once

#include "geom.h"
#include "ioapi.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace hostrt::pbio {

class ByteWriter {
public:
    void U16(std::uint16_t v) { put(v, 2); }
    void U32(std::uint32_t v) { put(v, 4); }
    void I32(std::int32_t v) { put(std::uint32_t(v), 4); }
    void F32(float v) {
        std::uint32_t bits;
        std::memcpy(&bits, &v, 4);
        put(bits, 4);
    }
    void Point(const float* v, int n) {
        for (int i = 0; i < n; ++i) F32(v[i]);
    }
    void Matrix(const Matrix3& m) {
        for (int r = 0; r < 4; ++r) Point(m.m[r], 3);
        U32(m.flags);
    }
    // Writes the collected bytes as chunk id.
    void WriteChunk(ISave* isave, USHORT id) const {
        ULONG written = 0;
        isave->BeginChunk(id);
        if (!bytes_.empty()) isave->Write(bytes_.data(), ULONG(bytes_.size()), &written);
        isave->EndChunk();
    }

private:
    void put(std::uint32_t v, int n) {
        for (int i = 0; i < n; ++i) bytes_.push_back(std::uint8_t(v >> (8 * i)));
    }
    std::vector<std::uint8_t> bytes_;
};

class ByteReader {
public:
    // Reads the whole open chunk; false when it cannot be read.
    bool ReadChunk(ILoad* iload) {
        const ULONG n = iload->CurChunkLength();
        bytes_.assign(n, 0);
        pos_ = 0;
        ok_ = true;
        ULONG got = 0;
        if (n > 0 && (iload->Read(bytes_.data(), n, &got) != IO_OK || got != n)) ok_ = false;
        return ok_;
    }
    std::uint16_t U16() { return std::uint16_t(take(2)); }
    std::uint32_t U32() { return take(4); }
    std::int32_t I32() { return std::int32_t(take(4)); }
    float F32() {
        std::uint32_t bits = take(4);
        float v;
        std::memcpy(&v, &bits, 4);
        return v;
    }
    void Point(float* v, int n) {
        for (int i = 0; i < n; ++i) v[i] = F32();
    }
    Matrix3 Matrix() {
        Matrix3 m;
        for (int r = 0; r < 4; ++r) Point(m.m[r], 3);
        m.flags = U32();
        return m;
    }
    std::size_t Remaining() const { return bytes_.size() - pos_; }
    // False once a read ran past the end of the chunk.
    bool Ok() const { return ok_; }

private:
    std::uint32_t take(int n) {
        if (pos_ + std::size_t(n) > bytes_.size()) {
            ok_ = false;
            return 0;
        }
        std::uint32_t v = 0;
        for (int i = 0; i < n; ++i) v |= std::uint32_t(bytes_[pos_ + std::size_t(i)]) << (8 * i);
        pos_ += std::size_t(n);
        return v;
    }
    std::vector<std::uint8_t> bytes_;
    std::size_t pos_ = 0;
    bool ok_ = true;
};

}  // namespace hostrt::pbio
