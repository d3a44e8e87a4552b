// Count chunks: one little-endian u32.
#include "io/count_chunk.h"

namespace hostrt {

IOResult SaveCountChunk(ISave* isave, USHORT id, ULONG count) {
    ULONG written = 0;
    isave->BeginChunk(id);
    const IOResult r = isave->Write(&count, sizeof count, &written);
    isave->EndChunk();
    return r;
}

IOResult ReadCount(ILoad* iload, ULONG max, ULONG& count) {
    ULONG got = 0;
    count = 0;
    if (iload->Read(&count, sizeof count, &got) != IO_OK || got != sizeof count || count > max) return IO_ERROR;
    return IO_OK;
}

}  // namespace hostrt
