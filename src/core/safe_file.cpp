#include "core/safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <mutex>
#include <random>
#include <system_error>

namespace ardel {

namespace fs = std::filesystem;

namespace {

std::mutex hookMutex;
WriteCall writeHook;  // empty: ::write

ssize_t CallWrite(int fd, const void* data, std::size_t size) {
    {
        std::lock_guard lock(hookMutex);
        if (writeHook) return writeHook(fd, data, size);
    }
    return ::write(fd, data, size);
}

[[noreturn]] void Fail(int error, const std::string& what, const fs::path& file) {
    throw std::system_error(error ? error : EIO, std::generic_category(),
                            what + " \"" + file.string() + "\"");
}

// Everything or an errno; a short write is taken up where it stopped.
int WriteAll(int fd, std::string_view bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = CallWrite(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return errno ? errno : EIO;
        }
        if (n == 0) return ENOSPC;  // a device that takes nothing more
        done += std::size_t(n);
    }
    return 0;
}

std::string UniqueSuffix() {
    static const unsigned seed = [] {
        try {
            return std::random_device{}();
        } catch (...) {
            return unsigned(::getpid());
        }
    }();
    static std::atomic<unsigned> counter{0};
    const unsigned long long v =
        (static_cast<unsigned long long>(seed) << 32) | counter.fetch_add(1);
    static const char digits[] = "0123456789abcdef";
    std::string s;
    for (int shift = 60; shift >= 0; shift -= 4) s.push_back(digits[(v >> shift) & 0xF]);
    return s;
}

// The old contents of a regular file, for an overlay.
std::string ReadOldFile(const fs::path& file) {
    const int fd = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (fd < 0) Fail(errno, "cannot read", file);
    std::string out;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        const int e = errno;
        ::close(fd);
        Fail(e ? e : EINVAL, "cannot read", file);
    }
    out.reserve(std::size_t(st.st_size));
    char buffer[65536];
    for (;;) {
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n < 0) {
            if (errno == EINTR) continue;
            const int e = errno;
            ::close(fd);
            Fail(e, "cannot read", file);
        }
        if (n == 0) break;
        out.append(buffer, std::size_t(n));
    }
    ::close(fd);
    return out;
}

// A pipe, a terminal or a device takes the bytes as they come; it is never replaced. A stream
// of the process (standard output sent to a file) is written at its end, after what the
// process wrote there before.
void WriteIntoSpecialFile(const fs::path& file, std::string_view bytes, bool append) {
    const int fd = ::open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | (append ? O_APPEND : 0));
    if (fd < 0) Fail(errno, "cannot write", file);
    const int e = WriteAll(fd, bytes);
    if (::close(fd) != 0 && e == 0 && errno != EINTR) Fail(errno, "cannot write", file);
    if (e != 0) Fail(e, "cannot write", file);
}

void SyncFolder(const fs::path& folder) {
    const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    ::fsync(fd);  // the rename is durable once the folder is; a failure here loses nothing
    ::close(fd);
}

}  // namespace

ScopedWriteCall::ScopedWriteCall(WriteCall call) {
    std::lock_guard lock(hookMutex);
    writeHook = std::move(call);
}

ScopedWriteCall::~ScopedWriteCall() {
    std::lock_guard lock(hookMutex);
    writeHook = nullptr;
}

void WriteFileSafely(const fs::path& file, std::string_view bytes, WriteMode mode) {
    if (IsOpenStreamName(file)) {
        WriteIntoSpecialFile(file, bytes, true);
        return;
    }
    struct stat st {};
    const bool exists = ::stat(file.c_str(), &st) == 0;
    if (!exists && errno != ENOENT) Fail(errno, "cannot write", file);
    if (exists && S_ISDIR(st.st_mode)) Fail(EISDIR, "cannot write", file);
    if (exists && !S_ISREG(st.st_mode)) {
        WriteIntoSpecialFile(file, bytes, false);
        return;
    }
    fs::path target = file;
    struct stat link {};
    if (::lstat(file.c_str(), &link) == 0 && S_ISLNK(link.st_mode)) {
        // Writing through a link writes the file it names; the link stays a link.
        std::error_code ec;
        target = exists ? fs::canonical(file, ec) : fs::weakly_canonical(file, ec);
        if (ec) Fail(ec.value(), "cannot resolve the link", file);
    }

    std::string merged;
    if (exists && mode == WriteMode::Overlay) {
        merged = ReadOldFile(target);
        if (merged.size() < bytes.size()) merged.resize(bytes.size());
        std::copy(bytes.begin(), bytes.end(), merged.begin());
        bytes = merged;
    }

    const fs::path tmp =
        target.parent_path() / (target.filename().string() + "." + UniqueSuffix() + ".tmp");
    // O_EXCL and O_NOFOLLOW: a name planted in the folder is never written through.
    const int fd = ::open(tmp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
    if (fd < 0) Fail(errno, "cannot create a temporary file for", file);
    auto abandon = [&](int error, const char* what) {
        ::close(fd);
        ::unlink(tmp.c_str());
        Fail(error, what, file);
    };
    if (exists && ::fchmod(fd, st.st_mode & 07777) != 0) abandon(errno, "cannot write");
    if (const int e = WriteAll(fd, bytes); e != 0) abandon(e, "cannot write");
    if (::fsync(fd) != 0) abandon(errno, "cannot write");
    if (::close(fd) != 0) {
        const int e = errno;
        ::unlink(tmp.c_str());
        Fail(e, "cannot write", file);
    }
    // Whatever appeared at the name in the meantime, a link is never replaced by the rename.
    struct stat now {};
    if (::lstat(target.c_str(), &now) == 0 && S_ISLNK(now.st_mode)) {
        ::unlink(tmp.c_str());
        Fail(ELOOP, "will not replace the link", target);
    }
    if (::rename(tmp.c_str(), target.c_str()) != 0) {
        const int e = errno;
        ::unlink(tmp.c_str());
        Fail(e, "cannot replace", file);
    }
    SyncFolder(target.parent_path());
}

std::optional<std::string> NotARegularFile(const fs::path& file) {
    struct stat st {};
    if (::stat(file.c_str(), &st) != 0) {
        if (errno == ENOENT || errno == ENOTDIR) return "it does not exist";
        return std::generic_category().message(errno);
    }
    if (S_ISREG(st.st_mode)) return std::nullopt;
    if (S_ISDIR(st.st_mode)) return "it is a folder, not a file";
    if (S_ISFIFO(st.st_mode)) return "it is a pipe, not a regular file";
    if (S_ISSOCK(st.st_mode)) return "it is a socket, not a regular file";
    return "it is a device, not a regular file";
}

bool IsSpecialFile(const fs::path& file) {
    struct stat st {};
    return ::stat(file.c_str(), &st) == 0 && !S_ISREG(st.st_mode) && !S_ISDIR(st.st_mode);
}

bool IsOpenStreamName(const fs::path& file) {
    const std::string name = file.lexically_normal().string();
    for (const char* prefix : {"/dev/fd/", "/proc/self/fd/", "/proc/thread-self/fd/"})
        if (name.rfind(prefix, 0) == 0) return true;
    return name == "/dev/stdout" || name == "/dev/stderr";
}

bool IsWrittenInPlace(const fs::path& file) {
    return IsOpenStreamName(file) || IsSpecialFile(file);
}

}  // namespace ardel
