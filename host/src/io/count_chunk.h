// A chunk holding one 32-bit count: how many entries an object's dynamic list of references has, written by
// Save so that Load can size the list before the host restores the references into it.
#pragma once

#include "ioapi.h"

namespace hostrt {

IOResult SaveCountChunk(ISave* isave, USHORT id, ULONG count);
// Reads the count of the open chunk; IO_ERROR when the chunk is short or the count is above max.
IOResult ReadCount(ILoad* iload, ULONG max, ULONG& count);

}  // namespace hostrt
