#include "files/data_file.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/temp_folder.h"

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
