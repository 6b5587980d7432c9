// What the reader sees of a damaged group: the frame opens, and every pane can be walked through.
#include "resources/resource.h"
#include "tests/shell/walk.h"

namespace {

struct DamageCase {
    const char* sentence;
    const wchar_t* file;
    std::size_t at;
    const char* bytes;   // that stand there instead; none: the file ends there
    std::size_t read;    // articles that could be opened
    std::wstring texts;  // of the boxes, but for the deletion's question
};

class DamagedWindowsTest : public WalkTest, public testing::WithParamInterface<DamageCase> {
  protected:
    // Opens the group and every article in it. How many there were.
    std::size_t ReadAll() {
        std::size_t opened = 0;
        OpenGroup(0);
        if (frame->currentView != ViewKind::kSubject) return 0;
        Command(IDC_VIEW_READ);
        for (uint32_t i = 0, rows = Subjects().list.visibleCount; i < rows; ++i) {
            Key(VK_RETURN);
            opened += frame->currentView == ViewKind::kArticle;
            if (frame->currentView == ViewKind::kArticle) Command(IDC_BACK_TO_SUBJECTS);
            Key(VK_DOWN);
        }
        Command(IDC_BACK_TO_GROUPS);
        return opened;
    }
};

TEST_P(DamagedWindowsTest, IsReportedAndCanBeWalkedThrough) {
    const DamageCase& row = GetParam();
    MakeGroup(L"fj.test", {{}, {1}, {4}});
    std::string bytes = folder.Read(row.file).substr(0, row.at) + row.bytes;
    if (*row.bytes) bytes += folder.Read(row.file).substr(bytes.size());
    folder.Write(row.file, bytes);
    answer = IDYES;
    Open();
    EXPECT_EQ(ReadAll(), row.read) << row.sentence;
    Command(IDC_DELETE_READ);
    Close();
    std::wstring texts;
    for (const Box& box : boxes)
        if (box.caption != L"Delete read articles") texts += box.text + L"|";
    EXPECT_EQ(Narrow(texts), Narrow(row.texts)) << row.sentence;
}

const std::wstring kInvalid = L"インデックスが不正です。|",
                   kNoStart = L"データファイルの初期化に失敗しました(13)|",
                   kNoRow = L"インデックスファイルの初期化に失敗しました(13)|",
                   kNotOpened = L"インデックスの初期化に失敗しました(13)|",
                   kNotDeleted = L"既読記事の削除に失敗しました(13)|";

const DamageCase kCases[] = {
    {"a version that there is not", L"fj.test.idx", 0, "\x50", 0,
     kInvalid + kNoStart + kNotDeleted + kInvalid + kNoStart},
    {"a count beyond the file", L"fj.test.idx", 17, "\x50", 0, kNotOpened + kNotDeleted},
    {"an index cut off in its records", L"fj.test.idx", 200, "", 0, kNotOpened + kNotDeleted},
    {"an index cut off in its header", L"fj.test.idx", 50, "", 0, kNoRow + kNotOpened + kNotDeleted + kNoRow},
    {"a record that names no place in the log", L"fj.test.idx", 111, "\x50", 2, kNotOpened},
    {"a date that is none", L"fj.test.idx", 164, "\x80\xFF\x0A\x25", 3, L""},
    {"a log cut off in its first article", L"fj.test.log", 100, "", 0, kNotOpened + kNotOpened + kNotOpened},
    {"a line end that is none", L"fj.test.log", 30, "\x80\xFF", 3, L""},
    {"a name that no file can have", L"group.dat", 2, "*", 0, L""},
};

INSTANTIATE_TEST_SUITE_P(Rows, DamagedWindowsTest, testing::ValuesIn(kCases));

}  // namespace
