// One group's files, and the bytes that belong into them, put together here and not by the program.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "store/group_store.h"
#include "tests/support/file_faults.h"
#include "tests/support/temp_folder.h"

inline std::string Word(uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}

inline std::string Padded(std::string text, std::size_t size) {
    text.resize(size, '\0');
    return text;
}

struct HeaderBytes {
    uint32_t version = 5;
    uint32_t lastFetched = 0;
    uint32_t serverLast = 0;
    uint32_t reserved = 0;
    uint32_t recordCount = 0;
    uint32_t savedPosition = 0;
    std::string status = {};
    uint32_t unread = 0;
    uint32_t high = 0;
    uint32_t low = 0;
};

// Version 2 ends with the status text, 3 and 4 with the unread count.
inline std::string Bytes(const HeaderBytes& h) {
    std::string bytes = Word(h.version) + Word(h.lastFetched) + Word(h.serverLast) + Word(h.reserved) +
                        Word(h.recordCount) + Word(h.savedPosition) + Padded(h.status, 64);
    if (h.version >= 3) bytes += Word(h.unread);
    if (h.version >= 5) bytes += Word(h.high) + Word(h.low);
    return bytes;
}

struct RecordBytes {
    uint32_t flags = 0;  // 1 read, 2 low, 4 high
    uint32_t number = 0;
    uint32_t offset = 0;
    uint32_t length = 0;
    std::string subject = "(none)";
    std::string date = "0000";
    std::string from = "(Unknown)";
    uint32_t textOffset = 0;
    uint32_t textLength = 0;
};

inline std::string Bytes(const RecordBytes& r) {
    return Word(r.flags) + Word(r.number) + Word(r.offset) + Word(r.length) + Padded(r.subject, 48) + r.date +
           Padded(r.from, 16) + Word(r.textOffset) + Word(r.textLength);
}

inline std::string IndexBytes(const HeaderBytes& header, const std::vector<RecordBytes>& records) {
    std::string bytes = Bytes(header);
    for (const RecordBytes& record : records)
        bytes += Bytes(record);
    return bytes;
}

class GroupTest : public testing::Test {
  protected:
    GroupTest() { EXPECT_TRUE(SetNames(store, folder.Path().c_str(), L"fj.test")); }

    std::string Index() const { return folder.Read(L"fj.test.idx"); }
    std::string Log() const { return folder.Read(L"fj.test.log"); }
    void WriteFilter(const char* text) { folder.Write(L"fj.test.flt", text); }
    void WriteLog(const std::string& bytes) { folder.Write(L"fj.test.log", bytes); }
    void WriteIndex(const std::string& bytes) { folder.Write(L"fj.test.idx", bytes); }

    TempFolder folder;
    GroupStore store;
};
