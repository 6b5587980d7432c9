#include "tests/hostile/hostile_run.h"

#include <gmock/gmock.h>

#include <cstring>

#include "store/group_changes.h"
#include "store/index.h"

namespace {

constexpr size_t kHeaderBytes = 100;
constexpr size_t kRecordBytes = 92;

const std::string kOldLog = StoredArticle(4, "old");

std::string OldIndex() {
    const auto length = static_cast<uint32_t>(kOldLog.size());
    return HeaderBytes({4, 4, 1, L"status"}) +
           RecordBytes({4, 0, length, L"old", "0000", L"(Unknown)", 9, 3});
}

uint32_t WordAt(const std::string& bytes, size_t offset) {
    uint32_t value = 0;
    if (offset + sizeof value <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

std::set<std::wstring> NamesIn(const std::wstring& folder) {
    std::set<std::wstring> names;
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW((folder + L"*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return names;
    do {
        const std::wstring name = found.cFileName;
        if (name != L"." && name != L"..") names.insert(name);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return names;
}

void CheckArticle(const std::string& index, size_t record, const std::string& log, size_t& end,
                  uint32_t number) {
    const size_t at = kHeaderBytes + record * kRecordBytes;
    const size_t start = WordAt(index, at + 8);
    ASSERT_EQ(WordAt(index, at + 4), number);
    ASSERT_GE(start, end) << "the article before it is not over";
    end = start + WordAt(index, at + 12);
    ASSERT_LE(end, log.size());
    const size_t head = log.find("X-Local-Seq: " + std::to_string(number) + "\r\n\r\n", start);
    EXPECT_LT(head, end) << "the head has no number";
    EXPECT_EQ(log.compare(end - 18, 18, "================\r\n"), 0);
    const uint32_t subjectLength = WordAt(index, at + 88);
    EXPECT_TRUE(subjectLength == 0 || WordAt(index, at + 84) + subjectLength <= head);
}

}  // namespace

std::wstring Received(int articles) {
    return std::to_wstring(articles) + L"件の記事を取得しました。";
}
std::wstring NotReceived(int error) {
    return L"受信に失敗しました(" + std::to_wstring(error) + L").";
}
std::wstring Incomplete(int error) {
    return L"受信が正常に終了しませんでした(" + std::to_wstring(error) + L").";
}

std::string StoredArticle(uint32_t number, const std::string& subject, const std::string& body) {
    return "Subject: " + subject + "\r\nX-Local-Seq: " + std::to_string(number) + "\r\n\r\n" + body +
           "================\r\n";
}

std::set<std::wstring> NamesOutside() {
    wchar_t temporary[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, temporary);
    std::set<std::wstring> all;
    for (const std::wstring& folder :
         {std::wstring(temporary), std::wstring(L"C:\\"), std::wstring(L".\\")}) {
        for (const std::wstring& name : NamesIn(folder)) {
            if (name.rfind(L"pelnor-", 0) != 0) all.insert(folder + name);  // not a test's own
        }
    }
    return all;
}

HostileRun::HostileRun() {
    groups = {kName};
    folder.Write(L"fj.test.idx", OldIndex());
    folder.Write(L"fj.test.log", kOldLog);
}

void HostileRun::Run(const Conversation& conversation) {
    AnsweringServer server(conversation);
    Run(server);
}

void HostileRun::CheckSound(const std::vector<uint32_t>& numbers) const {
    const std::string index = Index(kName);
    const std::string log = Log(kName);
    EXPECT_EQ(log.compare(0, kOldLog.size(), kOldLog), 0);
    EXPECT_EQ(index.compare(kHeaderBytes, kRecordBytes, OldIndex(), kHeaderBytes, kRecordBytes), 0);
    if (result.severity != kInformation) {
        std::string header = OldIndex().substr(0, kHeaderBytes);
        if (result.severity == kWarning) header.replace(24, 64, index, 24, 64);  // the status text
        EXPECT_EQ(index.substr(0, kHeaderBytes), header);
    }
    ASSERT_EQ(WordAt(index, 16), numbers.size()) << "records";
    EXPECT_EQ(WordAt(index, 88), numbers.size()) << "unread";
    ASSERT_GE(index.size(), kHeaderBytes + numbers.size() * kRecordBytes);
    size_t end = 0;
    for (size_t record = 0; record < numbers.size(); ++record)
        CheckArticle(index, record, log, end, numbers[record]);
    EXPECT_EQ(NamesIn(folder.Path()), (std::set<std::wstring>{L"fj.test.idx", L"fj.test.log"}));
    EXPECT_EQ(NamesOutside(), outside_);
}

void HostileRun::CheckRebuild() const {
    const std::string before = Index(kName);
    GroupStore store;
    ASSERT_TRUE(SetNames(store, folder.Path().c_str(), kName) && ReadHeader(store));
    folder.Write(L"fj.test.idx", HeaderBytes({store.header.lastFetched, store.header.serverLast, 0, StatusText(store)}));
    ASSERT_TRUE(ReadHeader(store));
    EXPECT_TRUE(RebuildFromLog(store)) << "error " << GetLastError();
    EXPECT_TRUE(Index(kName) == before) << "the rebuilt index differs";
}
