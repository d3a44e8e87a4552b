// FILETIME values from Unix times and from the file system.
#include "platform/file_time.h"

#include <sys/stat.h>

namespace hostrt {

FILETIME FileTimeFromUnix(std::int64_t seconds, std::uint32_t nanoseconds) {
    const std::int64_t since1601 = seconds + kFileTimeEpochOffsetSeconds;
    if (since1601 < 0) return {};
    const std::uint64_t value = std::uint64_t(since1601) * 10'000'000u + nanoseconds / 100u;
    return {DWORD(value & 0xFFFFFFFFu), DWORD(value >> 32)};
}

std::uint64_t FileTimeValue(const FILETIME& time) {
    return (std::uint64_t(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

std::optional<FILETIME> LastWriteFileTime(const std::filesystem::path& path) {
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) return std::nullopt;
    return FileTimeFromUnix(st.st_mtim.tv_sec, std::uint32_t(st.st_mtim.tv_nsec));
}

}  // namespace hostrt
