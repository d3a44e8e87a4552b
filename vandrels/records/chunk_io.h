// Small readers and writers for the fixed-size chunks that records save: one value per chunk, little-endian
// as the host writes it.
#pragma once

#include "ioapi.h"

#include <cstdint>

namespace chunkio {

// A chunk id holding the raw bytes of value.
template <class T> IOResult SaveValueChunk(ISave* isave, USHORT id, const T& value) {
    ULONG written = 0;
    isave->BeginChunk(id);
    const IOResult res = isave->Write(&value, ULONG(sizeof(T)), &written);
    isave->EndChunk();
    return res;
}

// Reads sizeof(T) bytes of the open chunk into value; value is untouched on a read error.
template <class T> IOResult ReadValue(ILoad* iload, T& value) {
    T read{};
    ULONG n = 0;
    const IOResult res = iload->Read(&read, ULONG(sizeof(T)), &n);
    if (res != IO_OK) return res;
    value = read;
    return IO_OK;
}

// A list count read from a file: negative or absurdly large counts mean a damaged file.
inline bool IsPlausibleCount(std::int32_t count) { return count >= 0 && count <= (1 << 20); }

}  // namespace chunkio
