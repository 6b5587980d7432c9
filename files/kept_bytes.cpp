#include "files/kept_bytes.h"

#include <cstring>

#include "text/last_error.h"

bool KeepBytesFrom(DataFile& file, uint32_t start, KeptBytes& kept) {
    const uint32_t added = file.position - start;
    NarrowText bytes = NewArray<char>(std::size_t{kept.length} + added);
    if (!bytes) return false;
    if (kept.length > 0) std::memcpy(bytes.get(), kept.bytes.get(), kept.length);
    SeekTo(file, start);
    if (!ReadExactly(file, bytes.get() + kept.length, added)) return false;
    kept.bytes = std::move(bytes);
    kept.length += added;
    return true;
}
