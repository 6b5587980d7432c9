#include "bench/groups.h"

#include <array>
#include <cstdio>
#include <filesystem>

#include "bench/measure.h"
#include "platform/owners.h"
#include "store/article_writer.h"
#include "store/index.h"

namespace {

constexpr DWORD kStep = 16384;

// "日本語のニュースを読む" over and over, in Shift_JIS.
constexpr char kBodyLine[] =
    "\x93\xFA\x96\x7B\x8C\xEA\x82\xCC\x83\x6A\x83\x85\x81\x5B\x83\x58\x82\xF0\x93\xC7\x82\xDE"
    "\x93\xFA\x96\x7B\x8C\xEA\x82\xCC\x83\x6A\x83\x85\x81\x5B\x83\x58\x82\xF0\x93\xC7\x82\xDE"
    "\x93\xFA\x96\x7B\x8C\xEA\x82\xCC\x83\x6A\x83\x85\x81\x5B\x83\x58\r\n";

bool AddHead(HeaderBlock& head, uint32_t number) {
    constexpr const char* kKinds[10] = {"urgent", "offer", "q", "q", "q", "q", "q", "q", "q", "q"};
    char subject[96];
    std::snprintf(subject, sizeof(subject), "Subject: [%s] \x93\xFA\x96\x7B\x8C\xEA %lu\r\n",
                  kKinds[number % 10], static_cast<unsigned long>(number));
    return AddHeaderLine(head, "From: \"Hanako\" <hanako@example.jp>\r\n") && AddHeaderLine(head, subject) &&
           AddHeaderLine(head, "Date: Thu, 5 Mar 1998 10:00:00 +0900\r\n");
}

bool AddArticle(ArticleWriter& writer, uint32_t number, uint32_t bodyLines) {
    bool done = BeginArticle(writer, number) && AddHead(writer.head, number) && FinishHead(writer);
    for (uint32_t line = 0; done && line < bodyLines; ++line)
        done = WriteBodyLine(writer, kBodyLine);
    return done && FinishBody(writer) && FinishArticle(writer);
}

void AddArticles(GroupStore& store, uint32_t articles, uint32_t bodyLines) {
    ArticleWriter writer;
    writer.store = &store;
    for (uint32_t number = 1; number <= articles; ++number)
        Require(AddArticle(writer, number, bodyLines), "storing an article");
}

void MarkEverySecondRead(GroupStore& store) {
    for (uint32_t number = 0; number < store.header.recordCount; number += 2) {
        IndexRecord record;
        Require(ReadRecord(store, record, number), "reading a record");
        record.flags |= kReadFlag;
        Require(WriteRecord(store, record, number), "marking a record");
        --store.header.unreadCount;
    }
}

FileOwner Open(const wchar_t* path, DWORD access, DWORD disposition) {
    FileOwner file(CreateFileW(path, access, 0, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr));
    Require(static_cast<bool>(file), "opening a plain file");
    return file;
}

DWORD Read(const FileOwner& file, std::array<char, kStep>& buffer, DWORD count = kStep) {
    DWORD got = 0;
    Require(ReadFile(file.Get(), buffer.data(), count, &got, nullptr), "reading a plain file");
    return got;
}

void Write(const FileOwner& file, const std::array<char, kStep>& buffer, DWORD count) {
    DWORD written = 0;
    const bool done = WriteFile(file.Get(), buffer.data(), count, &written, nullptr) && written == count;
    Require(done, "writing a plain file");
}

}  // namespace

BenchFolder::BenchFolder() {
    wchar_t temporary[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, temporary);
    path_ = temporary + (L"pelnor-bench-" + std::to_wstring(GetCurrentProcessId())) + L"\\";
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);  // of a run that failed
    Require(CreateDirectoryW(path_.c_str(), nullptr), "making the folder");
}

BenchFolder::~BenchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void MakeGroup(GroupStore& store, const BenchFolder& folder, const wchar_t* name, uint32_t articles,
               uint32_t bodyLines) {
    Require(SetNames(store, folder.Path(), name), "naming the group");
    WriteText(store.filterPath.get(), "+ urgent\r\n- offer\r\n");
    Require(WriteHeader(store) && OpenIndex(store) && OpenLog(store), "making the group");
    AddArticles(store, articles, bodyLines);
    MarkEverySecondRead(store);
    Require(WriteHeader(store), "writing the header");
    Require(CloseDataFile(store.log) && CloseDataFile(store.index), "closing the group");
}

void PlainRead(const wchar_t* path) {
    const FileOwner file = Open(path, GENERIC_READ, OPEN_EXISTING);
    std::array<char, kStep> buffer;
    while (Read(file, buffer) > 0) {
    }
}

void PlainRewrite(const wchar_t* path) {
    const FileOwner file = Open(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
    std::array<char, kStep> buffer;
    while (const DWORD got = Read(file, buffer)) {
        SetFilePointer(file.Get(), -static_cast<LONG>(got), nullptr, FILE_CURRENT);
        Write(file, buffer, got);
    }
}

void PlainCopy(const wchar_t* from, const wchar_t* to) {
    const FileOwner source = Open(from, GENERIC_READ, OPEN_EXISTING);
    const FileOwner copy = Open(to, GENERIC_WRITE, CREATE_ALWAYS);
    std::array<char, kStep> buffer;
    while (const DWORD got = Read(source, buffer))
        Write(copy, buffer, got);
}

void PlainReadAt(const wchar_t* path, uint32_t offset, uint32_t count) {
    const FileOwner file = Open(path, GENERIC_READ, OPEN_EXISTING);
    std::array<char, kStep> buffer;
    LONG high = 0;
    SetFilePointer(file.Get(), static_cast<LONG>(offset), &high, FILE_BEGIN);
    Require(count <= kStep && Read(file, buffer, count) == count, "reading a part of a plain file");
}

void PlainOverwrite(const wchar_t* path, uint32_t count) {
    const FileOwner file = Open(path, GENERIC_WRITE, OPEN_EXISTING);
    const std::array<char, kStep> buffer = {};
    Write(file, buffer, count);
}

void WriteText(const wchar_t* path, const std::string& text) {
    DataFile file;
    Require(OpenDataFile(file, path, FileMode::kReplace), "making a file");
    Require(WriteBytes(file, text.data(), static_cast<uint32_t>(text.size())) && CloseDataFile(file),
            "writing a file");
}

void CopyWhole(const wchar_t* from, const wchar_t* to) {
    Require(CopyFileW(from, to, FALSE), "copying a file");
}
