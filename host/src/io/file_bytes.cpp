// Reading whole files and replacing them through a temporary file and a rename.
#include "io/file_bytes.h"

#include "io/scene_file_error.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace hostrt {

namespace {

MSTR systemReason(int err) { return MSTR::FromUTF8(std::strerror(err)); }

// Closes a descriptor when the scope ends.
struct Fd {
    int fd = -1;
    ~Fd() {
        if (fd >= 0) ::close(fd);
    }
};

}  // namespace

std::vector<std::uint8_t> ReadFileBytes(const MSTR& path) {
    const std::string name = path.ToUTF8();
    Fd f{::open(name.c_str(), O_RDONLY | O_CLOEXEC)};
    if (f.fd < 0) throw SceneFileError(path, L"cannot open: " + systemReason(errno));
    struct stat st {};
    if (::fstat(f.fd, &st) != 0) throw SceneFileError(path, L"cannot open: " + systemReason(errno));
    if (S_ISDIR(st.st_mode)) throw SceneFileError(path, L"cannot open: " + systemReason(EISDIR));
    std::vector<std::uint8_t> bytes;
    if (S_ISREG(st.st_mode) && st.st_size > 0) bytes.reserve(std::size_t(st.st_size));
    std::uint8_t buf[1 << 16];
    for (;;) {
        const ssize_t got = ::read(f.fd, buf, sizeof buf);
        if (got < 0) {
            if (errno == EINTR) continue;
            throw SceneFileError(path, L"cannot read: " + systemReason(errno));
        }
        if (got == 0) break;
        bytes.insert(bytes.end(), buf, buf + got);
    }
    return bytes;
}

void WriteFileReplacing(const MSTR& path, const std::vector<std::uint8_t>& bytes) {
    static std::atomic<unsigned> counter{0};
    const std::string name = path.ToUTF8();
    // A file that nobody may write is read-only, as the read-only attribute makes a file on the host's own
    // platform: it is not replaced, whoever saves (the owner's and the system's rights alike).
    struct stat st {};
    if (::stat(name.c_str(), &st) == 0 && S_ISREG(st.st_mode) && !(st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)))
        throw SceneFileError(path, L"cannot write: the file is read-only");
    // A folder that nobody may write is read-only in the same way, so a save there fails for everyone alike.
    const std::size_t slash = name.find_last_of('/');
    const std::string folder = slash == std::string::npos ? std::string(".") : name.substr(0, slash ? slash : 1);
    if (::stat(folder.c_str(), &st) == 0 && S_ISDIR(st.st_mode) && !(st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)))
        throw SceneFileError(path, L"cannot write: the folder is read-only");
    const std::string temp = name + ".saving-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
    auto fail = [&](int err) {
        ::unlink(temp.c_str());
        throw SceneFileError(path, L"cannot write: " + systemReason(err));
    };
    {
        Fd f{::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666)};
        if (f.fd < 0) throw SceneFileError(path, L"cannot write: " + systemReason(errno));
        std::size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t put = ::write(f.fd, bytes.data() + done, bytes.size() - done);
            if (put < 0) {
                if (errno == EINTR) continue;
                fail(errno);
            }
            done += std::size_t(put);
        }
        if (::fsync(f.fd) != 0) fail(errno);
        const int fd = f.fd;
        f.fd = -1;
        if (::close(fd) != 0) fail(errno);
    }
    if (::rename(temp.c_str(), name.c_str()) != 0) fail(errno);
}

}  // namespace hostrt
