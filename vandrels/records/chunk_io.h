// Small readers and writers for the fixed-size chunks that records save: one value per chunk, little-endian
// as the host writes it.
#pragma once

#include "ioapi.h"
#include "tab.h"

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

// Reads a list count from the open chunk; a damaged count fails the load instead of sizing a list by it.
inline IOResult ReadCount(ILoad* iload, std::int32_t& count) {
    const IOResult res = ReadValue(iload, count);
    if (res != IO_OK) return res;
    return IsPlausibleCount(count) ? IO_OK : IO_ERROR;
}

// Makes list count empty slots (the host fills them when it restores the references after loading).
template <class T> void SizeWithNulls(Tab<T*>& list, std::int32_t count) {
    list.ZeroCount();
    list.SetCount(count);
    for (T*& slot : list) slot = nullptr;
}

// Reads count int32 values following a count already read; values is untouched on a read error.
inline IOResult ReadInt32s(ILoad* iload, std::int32_t count, Tab<int>& values) {
    Tab<int> read;
    for (std::int32_t k = 0; k < count; ++k) {
        std::int32_t v = 0;
        const IOResult res = ReadValue(iload, v);
        if (res != IO_OK) return res;
        read.Append(v);
    }
    values = read;
    return IO_OK;
}

}  // namespace chunkio
