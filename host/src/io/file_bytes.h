// Whole-file reading and replacing for scene files: errors name the file and the system's reason.
#pragma once

#include "strclass.h"

#include <cstdint>
#include <vector>

namespace hostrt {

// The bytes of a file; throws SceneFileError "<path>: cannot open: <reason>" (or "cannot read").
std::vector<std::uint8_t> ReadFileBytes(const MSTR& path);

// Writes bytes to a temporary file beside path and renames it over path, so a failed write leaves the old
// file as it was. Throws SceneFileError "<path>: cannot write: <reason>".
void WriteFileReplacing(const MSTR& path, const std::vector<std::uint8_t>& bytes);

}  // namespace hostrt
