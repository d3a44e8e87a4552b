#include "helper/file_time.h"

#include "winshim.h"

namespace vandrels {

std::uint64_t ReadLastWriteTime(const MSTR& path) {
    if (path.isNull()) return 0;
    HANDLE file = CreateFileW(path.data(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                              nullptr);
    if (file == INVALID_HANDLE_VALUE) return 0;
    FILETIME written{};
    const BOOL ok = GetFileTime(file, nullptr, nullptr, &written);
    CloseHandle(file);
    if (!ok) return 0;
    return (std::uint64_t(written.dwHighDateTime) << 32) | written.dwLowDateTime;
}

}  // namespace vandrels
