#include "tests/nntp/session_run.h"

#include <gmock/gmock.h>

#include "resources/resource.h"

namespace {

void AppendWord(std::string& bytes, uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(value >> shift & 0xFF);
}

void AppendField(std::string& bytes, std::string text, size_t size) {
    text.resize(size, '\0');
    bytes += text;
}

}  // namespace

std::string Sjis(const std::wstring& text) {
    std::string bytes(text.size() * 2 + 1, '\0');
    const int room = static_cast<int>(bytes.size());
    const int units = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(932, 0, text.data(), units, bytes.data(), room, nullptr, nullptr);
    bytes.resize(static_cast<size_t>(size));
    return bytes;
}

std::string HeaderBytes(const HeaderFields& fields) {
    std::string bytes;
    for (const uint32_t word : {5u, fields.lastFetched, fields.serverLast, 0u, fields.recordCount, 0u})
        AppendWord(bytes, word);
    AppendField(bytes, Sjis(fields.status).substr(0, 63), 64);
    for (const uint32_t word : {fields.recordCount, 0u, 0u})
        AppendWord(bytes, word);
    return bytes;
}

std::string RecordBytes(const RecordFields& fields) {
    std::string bytes;
    for (const uint32_t word : {0u, fields.number, fields.start, fields.length})
        AppendWord(bytes, word);
    AppendField(bytes, Sjis(fields.subject), 48);
    AppendField(bytes, fields.date, 4);
    AppendField(bytes, Sjis(fields.from), 16);
    AppendWord(bytes, fields.subjectOffset);
    AppendWord(bytes, fields.subjectLength);
    return bytes;
}

HiddenList::HiddenList(const std::vector<std::wstring>& names) {
    InitCommonControls();
    window_ =
        CreateWindowExW(0, WC_LISTVIEWW, L"", LVS_REPORT, 0, 0, 200, 200, nullptr, nullptr, nullptr, nullptr);
    EXPECT_NE(window_, nullptr) << "no list control: is there a display?";
    LVCOLUMNW column = {};
    SendMessageW(window_, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    for (size_t row = 0; row < names.size(); ++row) {
        LVITEMW item = {};
        item.mask = LVIF_TEXT;
        item.iItem = static_cast<int>(row);
        item.pszText = const_cast<wchar_t*>(names[row].c_str());
        SendMessageW(window_, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
}

void SessionRun::PutIndex(const std::wstring& group, uint32_t lastFetched, uint32_t serverLast) const {
    folder.Write(group + L".idx", HeaderBytes({lastFetched, serverLast, 0, L""}));
}

void SessionRun::Run(ScriptedServer& server) {
    RunAt(L"127.0.0.1", server.Start());
    EXPECT_THAT(server.Finish(), testing::IsEmpty());
}

void SessionRun::Run(std::string_view script) {
    std::vector<Step> steps = Script(script);
    if (steps.empty() || steps.back().act != Act::kReset) steps.push_back(Hear("QUIT\r\n"));
    ScriptedServer server(std::move(steps));
    Run(server);
}

void SessionRun::RunAt(const wchar_t* host, unsigned short port) {
    const HiddenList list(groups);
    GroupCursor cursor;
    cursor.list = list.Window();
    cursor.currentRow = 99;  // where an earlier run left it
    result = RunResult();
    progress = ProgressDialog();
    SessionRequest request;
    request.server = {host, port, user, password};
    request.folder = folder.Path().c_str();
    request.limit = limit;
    request.cursor = &cursor;
    request.progress = &progress;
    request.result = &result;
    // The user-interface thread's texts stay as they are.
    const wchar_t* shared[] = {FormatText(LoadResString(IDS_NO_MEMORY), L""), LoadResString(IDS_NO_ANSWER)};
    const std::wstring before[] = {shared[0], shared[1]};
    done = RunSession(request);
    error = GetLastError();
    EXPECT_EQ(shared[0], before[0]);
    EXPECT_EQ(shared[1], before[1]);
    EXPECT_EQ(done, result.severity != kError);
}
