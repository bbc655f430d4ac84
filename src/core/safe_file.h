// Writing files so that nothing is lost, and reading only what can be read without blocking.
//
// A file that is replaced is built beside the old one under a temporary name, flushed to disk
// and renamed over it: a full disk, a failed write or a killed process leaves the old file as it
// was. A target that is no regular file (a pipe, a terminal, /dev/null) is written as it stands
// and never replaced by a regular file.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ardel {

enum class WriteMode {
    // The file gets exactly the bytes given.
    Replace,
    // The bytes go over the old contents from byte 0, as opening an existing file and writing
    // into it did: an old file longer than the new bytes keeps its tail.
    Overlay,
};

// Writes bytes to file by mode. A symbolic link is followed to the file it names, and that file
// is the one replaced; the link itself is never renamed over. Pipes, devices and the names of
// open streams are written as they stand. Throws std::system_error naming
// the file; the temporary file is gone by then and the old file untouched.
void WriteFileSafely(const std::filesystem::path& file, std::string_view bytes,
                     WriteMode mode = WriteMode::Replace);

// The call that puts bytes into an open file: ::write unless a test replaces it, for instance
// to run out of disk space after a number of bytes. Returns what ::write returns (-1 with errno
// set on failure).
using WriteCall = std::function<ssize_t(int fd, const void* data, std::size_t size)>;

// Replaces the write call for the lifetime of the object, for every thread. Only one may be
// active at a time.
class ScopedWriteCall {
  public:
    explicit ScopedWriteCall(WriteCall call);
    ~ScopedWriteCall();
    ScopedWriteCall(const ScopedWriteCall&) = delete;
    ScopedWriteCall& operator=(const ScopedWriteCall&) = delete;
};

// Why a file cannot be read as an input of the program (a recording, an event, parameter or
// settings file), as a phrase to follow "cannot be opened: " ("it is a pipe, not a regular
// file"); nullopt when it is a regular file that exists. Looks only at the file's status, so a
// pipe with no writer does not block the caller.
std::optional<std::string> NotARegularFile(const std::filesystem::path& file);

// True when the path names something that exists but is no regular file and no folder
// (a pipe, a device, a socket).
bool IsSpecialFile(const std::filesystem::path& file);
// True for the names of the process's own open files: /dev/stdout, /dev/stderr, /dev/fd/N,
// /proc/self/fd/N. Through the links behind them lies whatever the caller's shell connected,
// a terminal, a pipe or a file it opened; that is written at its end, never replaced.
bool IsOpenStreamName(const std::filesystem::path& file);
// True when WriteFileSafely writes into the path as it stands rather than replacing a file
// (an open stream's name, a pipe, a device): such outputs cannot clash with one another.
bool IsWrittenInPlace(const std::filesystem::path& file);

}  // namespace ardel
