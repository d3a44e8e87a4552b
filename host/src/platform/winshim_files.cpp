// Windows file calls: handles for a file's times, file times, existence, the temporary folder and splitpath.
#include "winshim.h"

#include "platform/file_time.h"
#include "platform/host_dirs.h"
#include "platform/paths.h"

#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// An open file: a descriptor kept so that its times can be read while the handle lives.
struct FileHandle {
    int fd = -1;
};

std::mutex g_handlesMutex;
std::set<FileHandle*> g_handles;

bool isOpen(FileHandle* handle) {
    std::lock_guard lock(g_handlesMutex);
    return g_handles.count(handle) != 0;
}

DWORD errorOf(int err, const std::filesystem::path& path) {
    switch (err) {
        case ENOENT: {
            std::error_code ec;
            return std::filesystem::is_directory(path.parent_path().empty() ? "." : path.parent_path(), ec)
                       ? ERROR_FILE_NOT_FOUND
                       : ERROR_PATH_NOT_FOUND;
        }
        case ENOTDIR:
        case ENAMETOOLONG: return ERROR_PATH_NOT_FOUND;
        case EEXIST: return ERROR_FILE_EXISTS;
        case EINVAL: return ERROR_INVALID_PARAMETER;
        default: return ERROR_ACCESS_DENIED;
    }
}

void clear(FILETIME* time) {
    if (time) *time = {};
}

}  // namespace

HANDLE CreateFileW(LPCWSTR fileName, DWORD access, DWORD shareMode, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD flagsAndAttributes, HANDLE templateFile) {
    if (!fileName || !*fileName) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    const std::filesystem::path path = hostrt::ToNativePath(fileName);
    struct stat st {};
    const bool existed = ::stat(path.c_str(), &st) == 0;
    if (existed && S_ISDIR(st.st_mode) && !(flagsAndAttributes & FILE_FLAG_BACKUP_SEMANTICS)) {
        SetLastError(ERROR_ACCESS_DENIED);  // folders open only with backup semantics
        return INVALID_HANDLE_VALUE;
    }
    const bool writing = (access & GENERIC_WRITE) != 0;
    int flags = O_CLOEXEC | (writing ? ((access & GENERIC_READ) ? O_RDWR : O_WRONLY) : O_RDONLY);
    switch (disposition) {
        case CREATE_NEW: flags |= O_CREAT | O_EXCL; break;
        case CREATE_ALWAYS: flags |= O_CREAT | O_TRUNC; break;
        case OPEN_EXISTING: break;
        case OPEN_ALWAYS: flags |= O_CREAT; break;
        case TRUNCATE_EXISTING:
            if (!writing) {
                SetLastError(ERROR_INVALID_PARAMETER);
                return INVALID_HANDLE_VALUE;
            }
            flags |= O_TRUNC;
            break;
        default: SetLastError(ERROR_INVALID_PARAMETER); return INVALID_HANDLE_VALUE;
    }
    const int fd = ::open(path.c_str(), flags, 0666);
    if (fd < 0) {
        SetLastError(errorOf(errno, path));
        return INVALID_HANDLE_VALUE;
    }
    auto* handle = new FileHandle{fd};
    {
        std::lock_guard lock(g_handlesMutex);
        g_handles.insert(handle);
    }
    // As on Windows: opening with OPEN_ALWAYS or CREATE_ALWAYS says whether the file was there.
    const bool reportsExisting = disposition == OPEN_ALWAYS || disposition == CREATE_ALWAYS;
    SetLastError(reportsExisting && existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return handle;
}

BOOL CloseHandle(HANDLE handle) {
    auto* file = static_cast<FileHandle*>(handle);
    {
        std::lock_guard lock(g_handlesMutex);
        if (g_handles.erase(file) == 0) {
            SetLastError(ERROR_INVALID_HANDLE);
            return FALSE;
        }
    }
    ::close(file->fd);
    delete file;
    return TRUE;
}

BOOL GetFileTime(HANDLE file, FILETIME* creation, FILETIME* lastAccess, FILETIME* lastWrite) {
    clear(creation);
    clear(lastAccess);
    clear(lastWrite);
    auto* handle = static_cast<FileHandle*>(file);
    if (!isOpen(handle)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    struct statx sx {};
    if (::statx(handle->fd, "", AT_EMPTY_PATH, STATX_BTIME | STATX_ATIME | STATX_MTIME, &sx) != 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    auto fileTime = [](const struct statx_timestamp& t) { return hostrt::FileTimeFromUnix(t.tv_sec, t.tv_nsec); };
    // The creation time is the birth time where the file system keeps one, else the last-write time.
    if (creation) *creation = fileTime((sx.stx_mask & STATX_BTIME) ? sx.stx_btime : sx.stx_mtime);
    if (lastAccess) *lastAccess = fileTime(sx.stx_atime);
    if (lastWrite) *lastWrite = fileTime(sx.stx_mtime);
    return TRUE;
}

LONG CompareFileTime(const FILETIME* first, const FILETIME* second) {
    const std::uint64_t a = first ? hostrt::FileTimeValue(*first) : 0;
    const std::uint64_t b = second ? hostrt::FileTimeValue(*second) : 0;
    return a < b ? -1 : (a > b ? 1 : 0);
}

BOOL PathFileExistsW(LPCWSTR path) {
    if (!path || !*path) return FALSE;
    std::error_code ec;
    return std::filesystem::exists(hostrt::ToNativePath(path), ec) ? TRUE : FALSE;
}

DWORD GetTempPathW(DWORD bufferLength, LPWSTR buffer) {
    const std::wstring text =
        hostrt::WithTrailingSeparator(hostrt::FromNativePath(hostrt::SystemTempFolder()));
    if (bufferLength > text.size()) {
        if (!buffer) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return 0;
        }
        text.copy(buffer, text.size());
        buffer[text.size()] = L'\0';
        return DWORD(text.size());
    }
    return DWORD(text.size() + 1);
}

errno_t _wsplitpath_s(const wchar_t* path, wchar_t* drive, std::size_t driveSize, wchar_t* dir, std::size_t dirSize,
                      wchar_t* fname, std::size_t fnameSize, wchar_t* ext, std::size_t extSize) {
    struct Output {
        wchar_t* buffer;
        std::size_t size;
        std::wstring text;
    };
    Output outputs[] = {{drive, driveSize, {}}, {dir, dirSize, {}}, {fname, fnameSize, {}}, {ext, extSize, {}}};
    auto clearAll = [&outputs] {
        for (Output& out : outputs)
            if (out.buffer && out.size > 0) out.buffer[0] = L'\0';
    };
    if (!path) {
        clearAll();
        return EINVAL;
    }
    for (const Output& out : outputs) {
        if ((out.buffer == nullptr) != (out.size == 0)) {
            clearAll();
            return EINVAL;
        }
    }
    const hostrt::PathParts parts = hostrt::SplitPath(path);
    outputs[0].text = parts.drive;
    outputs[1].text = parts.directory;
    outputs[2].text = parts.stem;
    outputs[3].text = parts.extension;
    for (const Output& out : outputs) {
        if (out.buffer && out.text.size() >= out.size) {
            clearAll();
            return ERANGE;
        }
    }
    for (Output& out : outputs) {
        if (!out.buffer) continue;
        out.text.copy(out.buffer, out.text.size());
        out.buffer[out.text.size()] = L'\0';
    }
    return 0;
}
