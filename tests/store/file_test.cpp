#include "store/file.h"

#include <cstring>
#include <random>

#include "tests/store/group_files.h"

namespace {

class FileTest : public testing::Test {
  protected:
    bool Open(DataFile& file, FileMode mode) { return OpenDataFile(file, path.c_str(), mode); }

    TempFolder folder;
    std::wstring path = folder.FilePath(L"f");
};

// Sizes around the buffer's 16384 bytes and the index record's 92.
TEST_F(FileTest, BehavesLikePlainMemory) {
    constexpr uint32_t kSizes[] = {0, 1, 7, 92, 1023, 8192, 16292, 16383, 16384, 16385, 32768, 40001};
    std::mt19937 random(16384);
    std::string memory;
    DataFile file;
    ASSERT_TRUE(Open(file, FileMode::kReplace));
    uint32_t position = 0;
    for (int step = 0; step < 6000; ++step) {
        const uint32_t size = kSizes[random() % std::size(kSizes)];
        const unsigned action = random() % 10;
        if (action == 0) {
            position = random() % 2 ? size : position + random() % 300;
            SeekTo(file, position);
        } else if (action == 1) {
            position = static_cast<uint32_t>(memory.size());
            SeekToEnd(file);
        } else if (action == 2) {
            ASSERT_TRUE(FlushDataFile(file));
            SeekTo(file, position = position > size ? position - size : 0);
        } else if (action == 3 && random() % 4 == 0) {
            ASSERT_TRUE(CloseDataFile(file));
            ASSERT_EQ(folder.Read(L"f"), memory) << "step " << step;
            ASSERT_TRUE(Open(file, random() % 8 ? FileMode::kReadWrite : FileMode::kReplace));
            if (file.size == 0) memory.clear();
            position = 0;
        } else if (action < 7 && position < 120000) {
            const std::string bytes(size, static_cast<char>('a' + step % 26));
            ASSERT_TRUE(WriteBytes(file, bytes.data(), size));
            position += size;
            if (size != 0 && memory.size() < position) memory.resize(position, '\0');
            if (size != 0) memory.replace(position - size, size, bytes);
        } else {
            std::string bytes(size, '#');
            uint32_t got = 0;
            ASSERT_TRUE(ReadBytes(file, bytes.data(), size, got));
            const std::string expected = position < memory.size() ? memory.substr(position, size) : "";
            ASSERT_EQ(bytes.substr(0, got), expected) << "step " << step;
            position += got;
        }
        ASSERT_EQ(file.size, memory.size()) << "step " << step;
    }
}

TEST_F(FileTest, ModesSayWhatMustExistAndWhatIsKept) {
    const struct {
        const char* why;
        FileMode mode;
        DWORD missing;  // error for a file that is not there; 0 when it is made
        const char* kept;
        DWORD secondReader;  // error for another that wants to read meanwhile
    } rows[] = {
        {"reading", FileMode::kRead, 2, "old", 0},
        {"reading alone", FileMode::kReadAlone, 2, "old", 32},
        {"reading and writing", FileMode::kReadWrite, 0, "old", 32},
        {"reading and writing what exists", FileMode::kReadWriteExisting, 2, "old", 32},
        {"writing", FileMode::kWrite, 0, "old", 32},
        {"replacing", FileMode::kReplace, 0, "", 32},
    };
    for (const auto& row : rows) {
        DeleteFileW(path.c_str());
        DataFile file;
        SetLastError(0);
        EXPECT_EQ(Open(file, row.mode), row.missing == 0) << row.why;
        if (row.missing) EXPECT_EQ(GetLastError(), row.missing) << row.why;
        EXPECT_EQ(folder.Has(L"f"), row.missing == 0) << row.why;
        EXPECT_TRUE(CloseDataFile(file));
        folder.Write(L"f", "old");
        EXPECT_TRUE(Open(file, row.mode)) << row.why;
        DataFile second;
        EXPECT_EQ(Open(second, FileMode::kRead), row.secondReader == 0) << row.why;
        if (row.secondReader) EXPECT_EQ(GetLastError(), row.secondReader) << row.why;
        CloseDataFile(second);
        CloseDataFile(file);
        EXPECT_EQ(folder.Read(L"f"), row.kept) << row.why;
    }
}

TEST_F(FileTest, LinesAreReadToTheFilesEnd) {
    const std::string x1021(1021, 'x');
    const struct {
        const char* why;
        std::string bytes;
        bool cut;
        std::vector<std::string> lines;
        DWORD end;
    } rows[] = {
        {"an empty file", "", false, {}, 38},
        {"lines with their ends", "a\r\n\r\nb\r\n", false, {"a\r\n", "\r\n", "b\r\n"}, 38},
        {"the last line lacks its end", "a\r\nb", true, {"a", "b"}, 38},
        {"a lone LF ends no line", "a\nb\r\nc", true, {"a\nb", "c"}, 38},
        {"1023 bytes fit", x1021 + "\r\nb", true, {x1021, "b"}, 38},
        {"1024 bytes do not", "a\r\n" + x1021 + "x\r\nb", true, {"a"}, 234},
        {"1023 bytes at the end fit", x1021 + "xx", false, {x1021 + "xx"}, 38},
        {"1024 bytes at the end do not", x1021 + "xxx", false, {}, 234},
    };
    for (const auto& row : rows) {
        folder.Write(L"f", row.bytes);
        DataFile file;
        ASSERT_TRUE(Open(file, FileMode::kRead));
        std::vector<std::string> lines;
        char line[1024];
        while (ReadLine(file, line, sizeof line, row.cut))
            lines.emplace_back(line);
        EXPECT_EQ(GetLastError(), row.end) << row.why;
        EXPECT_EQ(lines, row.lines) << row.why;
    }
}

TEST_F(FileTest, LinesCrossTheBuffersEdge) {
    std::string bytes;
    std::vector<std::string> lines;
    for (std::size_t length = 1; bytes.size() < 100000; length = length % 1021 + 97) {
        lines.emplace_back(length % 1022, static_cast<char>('a' + length % 26));
        bytes += lines.back() + "\r\n";
    }
    folder.Write(L"f", bytes);
    DataFile file;
    ASSERT_TRUE(Open(file, FileMode::kRead));
    for (const std::string& expected : lines) {
        char line[1024];
        uint32_t taken = 0;
        ASSERT_TRUE(ReadLine(file, line, sizeof line, true, &taken));
        ASSERT_EQ(line, expected);
        ASSERT_EQ(taken, expected.size() + 2);
    }
}

TEST_F(FileTest, AFailedWriteLeavesTheDiskAsItWas) {
    folder.Write(L"f", "old");
    DataFile file;
    ASSERT_TRUE(Open(file, FileMode::kReadWrite));
    SeekToEnd(file);
    ASSERT_TRUE(WriteBytes(file, "lost", 4));
    {
        const FileFaults faults(1);
        EXPECT_FALSE(FlushDataFile(file));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_IO_DEVICE});
    }
    EXPECT_TRUE(FlushDataFile(file)) << "the bytes that could not be written are forgotten";
    SeekToEnd(file);
    ASSERT_TRUE(WriteBytes(file, "new", 3));
    {
        const FileFaults faults(1);
        EXPECT_FALSE(CloseDataFile(file));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_IO_DEVICE});
        EXPECT_FALSE(IsOpen(file)) << "closed in every case";
    }
    ASSERT_TRUE(Open(file, FileMode::kReadWrite));
    ASSERT_TRUE(WriteBytes(file, "n", 1));
    ASSERT_TRUE(CloseDataFile(file));
    EXPECT_EQ(folder.Read(L"f"), "nld");
    SetLastError(5);
    {
        const FileFaults faults(2);
        DataFile dropped;
        EXPECT_TRUE(Open(dropped, FileMode::kReadWrite));
        EXPECT_TRUE(WriteBytes(dropped, "x", 1));
        SetLastError(5);
    }
    EXPECT_EQ(GetLastError(), 5u) << "the end of a file's life keeps the reason of an earlier failure";
}

TEST_F(FileTest, EveryCallPassesItsFailureOn) {
    folder.Write(L"f", "old");
    DataFile file;
    char bytes[4] = {};
    uint32_t got = 0;
    const auto fails = [](auto call) {
        const FileFaults faults(1);
        return !call() && GetLastError() == ERROR_IO_DEVICE;
    };
    EXPECT_TRUE(fails([&] { return Open(file, FileMode::kRead); }));
    ASSERT_TRUE(Open(file, FileMode::kRead));
    EXPECT_TRUE(fails([&] { return ReadBytes(file, bytes, 3, got); }));
    EXPECT_TRUE(fails([&] { return ReadLine(file, bytes, 4, false); }));
    EXPECT_TRUE(ReadExactly(file, bytes, 3)) << "a later read succeeds";
    EXPECT_STREQ(bytes, "old");
    EXPECT_FALSE(ReadExactly(file, bytes, 1));
    EXPECT_EQ(GetLastError(), 13u) << "the file is shorter than it should be";
    CloseDataFile(file);
    EXPECT_TRUE(fails([&] { return DeleteDataFile(path.c_str()); }));
    EXPECT_TRUE(fails([&] { return RenameDataFile(path.c_str(), L"g"); }));
    EXPECT_EQ(folder.Read(L"f"), "old");
}

TEST_F(FileTest, PositionsBeyondTwoGigabytes) {
    constexpr uint32_t kFar = 0xC0000010;
    DataFile file;
    ASSERT_TRUE(Open(file, FileMode::kReplace));
    SeekTo(file, kFar);
    ASSERT_TRUE(WriteBytes(file, "far", 3) && FlushDataFile(file));
    SeekTo(file, 0);
    ASSERT_TRUE(WriteBytes(file, "near", 4) && CloseDataFile(file));
    ASSERT_TRUE(Open(file, FileMode::kReadWrite));
    EXPECT_EQ(file.size, kFar + 3);
    char bytes[5] = {};
    SeekTo(file, kFar - 1);
    ASSERT_TRUE(ReadExactly(file, bytes, 4));
    EXPECT_EQ(std::string(bytes, 4), std::string("\0far", 4));
    SeekTo(file, 0xFFFFFFFE);
    EXPECT_FALSE(WriteBytes(file, bytes, 4)) << "offsets in the index have 32 bits";
    EXPECT_EQ(GetLastError(), DWORD{ERROR_DISK_FULL});
}

}  // namespace
