// Parts of a file that nobody reads, kept as they stand so that writing the file anew loses none of them.
#pragma once

#include <cstdint>

#include "files/data_file.h"

struct KeptBytes {
    NarrowText bytes;  // no NUL at their end; null when there are none
    uint32_t length = 0;
};

// Keeps the bytes from `start` up to where the file stands, behind those that are kept already. Error 8 and
// those of reading; what was kept then stays.
[[nodiscard]] bool KeepBytesFrom(DataFile& file, uint32_t start, KeptBytes& kept);

[[nodiscard]] inline bool WriteKept(DataFile& file, const KeptBytes& kept) {
    return WriteBytes(file, kept.bytes.get(), kept.length);
}
