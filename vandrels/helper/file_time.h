// The last-write time of a reference file, as the helper stores it to tell whether the file changed.
#pragma once

#include "strclass.h"

#include <cstdint>

namespace vandrels {

// The file's last-write time (the host's file-time value); 0 when the file cannot be opened or its times read.
std::uint64_t ReadLastWriteTime(const MSTR& path);

}  // namespace vandrels
