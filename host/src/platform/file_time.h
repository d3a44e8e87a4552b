// FILETIME values: 100 ns units since 1601-01-01 (UTC), made from the file system's times.
#pragma once

#include "maxtypes.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace hostrt {

// Seconds between 1601-01-01 and 1970-01-01.
inline constexpr std::int64_t kFileTimeEpochOffsetSeconds = 11644473600;

// The FILETIME of a Unix time (seconds and nanoseconds since 1970); times before 1601 answer 0.
FILETIME FileTimeFromUnix(std::int64_t seconds, std::uint32_t nanoseconds);
std::uint64_t FileTimeValue(const FILETIME& time);

// The last-write time of a file or folder; nothing when it cannot be read.
std::optional<FILETIME> LastWriteFileTime(const std::filesystem::path& path);

}  // namespace hostrt
