// Replacing files: the bytes that land, what a failed write leaves, and targets that are no
// regular files.
#include "core/safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <iterator>
#include <thread>

#include "support/synthetic.h"

namespace ardel {
namespace {

namespace fs = std::filesystem;
using testing::TempDir;

std::string ReadText(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

std::vector<std::string> FolderNames(const fs::path& dir) {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(dir)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

// A disk that fills up after `room` bytes.
WriteCall DiskFullAfter(std::size_t room) {
    auto left = std::make_shared<std::size_t>(room);
    return [left](int fd, const void* data, std::size_t size) -> ssize_t {
        if (*left == 0) {
            errno = ENOSPC;
            return -1;
        }
        const std::size_t n = std::min(size, *left);
        *left -= n;
        return ::write(fd, data, n);
    };
}

TEST(SafeFile, ReplaceAndOverlayGiveTheBytesOfTheirRule) {
    TempDir dir;
    const fs::path f = dir / "a.txt";
    WriteFileSafely(f, "0123456789");
    EXPECT_EQ(ReadText(f), "0123456789");
    WriteFileSafely(f, "abc", WriteMode::Overlay);
    EXPECT_EQ(ReadText(f), "abc3456789");  // the longer old tail stays
    WriteFileSafely(f, "ABCDEFGHIJKLM", WriteMode::Overlay);
    EXPECT_EQ(ReadText(f), "ABCDEFGHIJKLM");
    WriteFileSafely(f, "xy");
    EXPECT_EQ(ReadText(f), "xy");
    WriteFileSafely(dir / "new.bin", "new", WriteMode::Overlay);
    EXPECT_EQ(ReadText(dir / "new.bin"), "new");
    EXPECT_EQ(FolderNames(dir.path()), (std::vector<std::string>{"a.txt", "new.bin"}));

    // The file keeps its permissions.
    fs::permissions(f, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    WriteFileSafely(f, "again");
    EXPECT_EQ(fs::status(f).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST(SafeFile, AFailedWriteLeavesTheOldFileAndNoTemporaryFile) {
    TempDir dir;
    const fs::path f = dir / "events.EVT";
    const std::string old(10000, 'o');
    WriteFileSafely(f, old);
    for (WriteMode mode : {WriteMode::Replace, WriteMode::Overlay}) {
        for (std::size_t room : {0u, 4096u, 5999u}) {
            ScopedWriteCall full(DiskFullAfter(room));
            try {
                WriteFileSafely(f, std::string(6000, 'n'), mode);
                ADD_FAILURE() << "the write should fail with " << room << " bytes of room";
            } catch (const std::system_error& e) {
                EXPECT_EQ(e.code().value(), ENOSPC);
                EXPECT_NE(std::string(e.what()).find("events.EVT"), std::string::npos);
            }
            EXPECT_TRUE(ReadText(f) == old) << "the old file was changed";
            EXPECT_EQ(FolderNames(dir.path()), std::vector<std::string>{"events.EVT"});
        }
    }
    // A file that did not exist is not left behind half written.
    ScopedWriteCall full(DiskFullAfter(10));
    EXPECT_THROW(WriteFileSafely(dir / "fresh.csv", std::string(100, 'x')), std::system_error);
    EXPECT_FALSE(fs::exists(dir / "fresh.csv"));
    EXPECT_EQ(FolderNames(dir.path()), std::vector<std::string>{"events.EVT"});
}

TEST(SafeFile, LinksStayLinksAndPipesAndDevicesAreWrittenAsTheyAre) {
    TempDir dir;
    // Through a link the file it names is replaced, and the link stays a link.
    WriteFileSafely(dir / "real.csv", "old contents");
    fs::create_symlink(dir / "real.csv", dir / "link.csv");
    WriteFileSafely(dir / "link.csv", "new", WriteMode::Overlay);
    EXPECT_TRUE(fs::is_symlink(dir / "link.csv"));
    EXPECT_EQ(ReadText(dir / "real.csv"), "new contents");

    // A device takes the bytes and stays a device, also behind a link.
    fs::create_symlink("/dev/null", dir / "null.csv");
    WriteFileSafely(dir / "null.csv", "discarded");
    WriteFileSafely("/dev/null", "discarded");
    EXPECT_TRUE(fs::is_symlink(dir / "null.csv"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));

    // A pipe is written into, not replaced by a regular file.
    const fs::path fifo = dir / "pipe";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = ReadText(fifo); });
    WriteFileSafely(fifo, "through the pipe");
    reader.join();
    EXPECT_EQ(received, "through the pipe");
    EXPECT_TRUE(fs::is_fifo(fifo));

    EXPECT_THROW(WriteFileSafely(dir.path(), "x"), std::system_error);  // a folder
    EXPECT_THROW(WriteFileSafely(dir / "no/such/folder.txt", "x"), std::system_error);
}

TEST(SafeFile, NamesOfOpenStreamsAreWrittenAtTheirEndNeverReplaced) {
    TempDir dir;
    // Standard output sent to a file by the shell: what the process wrote there stays first.
    const fs::path out = dir / "redirected.txt";
    const int fd = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::write(fd, "before\n", 7), 7);
    struct stat was {};
    ::fstat(fd, &was);
    const fs::path name = "/proc/self/fd/" + std::to_string(fd);
    EXPECT_TRUE(IsOpenStreamName(name));
    EXPECT_TRUE(IsWrittenInPlace(name));
    WriteFileSafely(name, "table\n");
    ::close(fd);
    EXPECT_EQ(ReadText(out), "before\ntable\n");
    struct stat now {};
    ::stat(out.c_str(), &now);
    EXPECT_EQ(now.st_ino, was.st_ino);  // the same file, not a new one renamed over it

    // Standard output as a pipe.
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    WriteFileSafely("/dev/fd/" + std::to_string(ends[1]), "piped");
    ::close(ends[1]);
    char got[16] = {};
    EXPECT_EQ(::read(ends[0], got, sizeof got), 5);
    ::close(ends[0]);
    EXPECT_EQ(std::string(got), "piped");

    EXPECT_TRUE(IsOpenStreamName("/dev/stdout"));
    EXPECT_FALSE(IsOpenStreamName(dir / "stdout"));
    EXPECT_FALSE(IsWrittenInPlace(out));
}

TEST(SafeFile, OnlyRegularFilesAreInputs) {
    TempDir dir;
    WriteFileSafely(dir / "f", "x");
    ASSERT_EQ(::mkfifo((dir / "pipe").c_str(), 0600), 0);
    EXPECT_FALSE(NotARegularFile(dir / "f"));
    EXPECT_EQ(NotARegularFile(dir / "pipe"), "it is a pipe, not a regular file");
    EXPECT_EQ(NotARegularFile(dir.path()), "it is a folder, not a file");
    EXPECT_EQ(NotARegularFile("/dev/null"), "it is a device, not a regular file");
    EXPECT_EQ(NotARegularFile(dir / "missing"), "it does not exist");
    EXPECT_TRUE(IsSpecialFile(dir / "pipe"));
    EXPECT_FALSE(IsSpecialFile(dir / "f"));
    EXPECT_FALSE(IsSpecialFile(dir.path()));
}

}  // namespace
}  // namespace ardel
