#include "keywords/keyword_dialog.h"

#include <wchar.h>

#include <cstring>

#include "files/data_file.h"
#include "filters/keyword_filter.h"
#include "resources/resource.h"
#include "store/record.h"
#include "text/convert.h"
#include "text/last_error.h"
#include "text/messages.h"
#include "text/sjis.h"

namespace {

constexpr uint32_t kLineSize = 1024;
constexpr int kKeywordSize = 1024;                       // UTF-16 units that the edit field gives
constexpr uint32_t kLongestTyped = kLongestKeyword / 2;  // units: each takes two bytes at most

LRESULT SendList(const KeywordDialogState& state, UINT message, WPARAM wParam, LPARAM lParam) {
    return SendDlgItemMessageW(state.dialog, IDC_KEYWORD, message, wParam, lParam);
}

LPARAM TextParameter(const wchar_t* text) {
    return reinterpret_cast<LPARAM>(text);
}

// False when the list has no room.
bool AddKeyword(const KeywordDialogState& state, const wchar_t* keyword, uint32_t priority) {
    const LRESULT item = SendList(state, CB_ADDSTRING, 0, TextParameter(keyword));
    if (item < 0) return false;
    SendList(state, CB_SETITEMDATA, static_cast<WPARAM>(item), priority);
    return true;
}

WideText KeywordAt(const KeywordDialogState& state, LRESULT item) {
    const LRESULT length = SendList(state, CB_GETLBTEXTLEN, static_cast<WPARAM>(item), 0);
    WideText text = length < 0 ? nullptr : NewArray<wchar_t>(static_cast<std::size_t>(length) + 1);
    if (text) SendList(state, CB_GETLBTEXT, static_cast<WPARAM>(item), TextParameter(text.get()));
    return text;
}

// The first item with exactly this text, or -1. The list's own search ignores case, which matters in
// keywords, and finds no empty text.
LRESULT FindKeyword(const KeywordDialogState& state, const wchar_t* keyword) {
    const LRESULT count = SendList(state, CB_GETCOUNT, 0, 0);
    for (LRESULT item = 0; item < count; ++item) {
        const WideText text = KeywordAt(state, item);
        if (text && wcscmp(text.get(), keyword) == 0) return item;
    }
    return -1;
}

void SelectKeyword(const KeywordDialogState& state, const wchar_t* keyword) {
    const LRESULT item = FindKeyword(state, keyword);
    if (item >= 0) SendList(state, CB_SETCURSEL, static_cast<WPARAM>(item), 0);
}

// The radio buttons.

void Check(const KeywordDialogState& state, int id, bool checked) {
    SendDlgItemMessageW(state.dialog, id, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

bool IsChecked(const KeywordDialogState& state, int id) {
    return SendDlgItemMessageW(state.dialog, id, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void ShowPriority(const KeywordDialogState& state, uint32_t priority) {
    Check(state, IDC_KEYWORD_HIGH, priority == kPriorityHigh);
    Check(state, IDC_KEYWORD_NORMAL, priority == kPriorityNormal);
    Check(state, IDC_KEYWORD_LOW, priority == kPriorityLow);
}

uint32_t ChosenPriority(const KeywordDialogState& state) {
    if (IsChecked(state, IDC_KEYWORD_HIGH)) return kPriorityHigh;
    return IsChecked(state, IDC_KEYWORD_LOW) ? kPriorityLow : kPriorityNormal;
}

// Loading.

void ShowNoMemory() {
    MessageBoxW(nullptr, LoadResString(IDS_NO_MEMORY), kProgramCaption, MB_OK | MB_ICONERROR);
}

// One line of the file, "+ keyword" or "- keyword". A shorter line has no keyword.
bool AddLine(const KeywordDialogState& state, const char* line) {
    if (std::strlen(line) < 2) return true;
    const WideText keyword = ToWide(line + 2);
    return keyword && AddKeyword(state, keyword.get(), line[0] == '+' ? kPriorityHigh : kPriorityLow);
}

void NoteLoadFailure(KeywordDialogState& state) {
    state.loadError = GetError();
    ShowLastError(IDS_OPEN_FILE_FAILED, state.filterPath);
}

void NoteNoMemory(KeywordDialogState& state) {
    state.loadError = kErrorNoMemory;
    ShowNoMemory();
}

// From `start` to the file's end.
bool KeepRest(KeywordDialogState& state, DataFile& file, uint32_t start) {
    char passed[kLineSize];
    for (uint32_t got = kLineSize; got > 0;) {
        if (!ReadBytes(file, passed, kLineSize, got)) return false;
    }
    return KeepBytesFrom(file, start, state.rest);
}

// Lists the lines up to the first that is too long, where the filter stops too, and keeps the rest.
bool ListKeywords(KeywordDialogState& state, DataFile& file) {
    char line[kLineSize];
    uint32_t start = file.position;
    while (ReadLine(file, line, kLineSize, true)) {
        if (!AddLine(state, line)) return Fail(kErrorNoMemory);
        start = file.position;
    }
    return GetError() == kErrorEndOfFile || (GetError() == kErrorMoreData && KeepRest(state, file, start));
}

// Remembers a failure: a save would lose what was neither listed nor kept.
void LoadKeywords(KeywordDialogState& state) {
    DataFile file;
    if (!OpenKeywordFile(file, state.filterPath)) {
        if (GetError() != kErrorFileNotFound) NoteLoadFailure(state);
        return;
    }
    if (ListKeywords(state, file)) return;
    if (GetError() == kErrorNoMemory) {
        NoteNoMemory(state);
    } else {
        NoteLoadFailure(state);
    }
}

// The text up to its first line end, cut between two characters to fit a line of the file.
WideText FitKeyword(const wchar_t* text) {
    WideText keyword = CopyText(text);
    if (!keyword) return nullptr;
    keyword[wcscspn(keyword.get(), L"\r\n")] = L'\0';
    const NarrowText bytes = ToNarrow(keyword.get());
    if (!bytes) return nullptr;
    const std::size_t length = std::strlen(bytes.get());
    if (length <= kLongestKeyword) return keyword;
    bytes[CopyWholeCharacters(bytes.get(), kLongestKeyword, bytes.get(), length)] = '\0';
    return ToWide(bytes.get());
}

WideText ProposedKeyword(KeywordDialogState& state) {
    WideText keyword = state.proposedKeyword ? FitKeyword(state.proposedKeyword) : nullptr;
    if (state.proposedKeyword && !keyword) NoteNoMemory(state);
    return keyword;
}

INT_PTR OnInitDialog(HWND dialog, KeywordDialogState* state) {
    SetWindowPointer(dialog, kUserData, state);
    state->dialog = dialog;
    ShowPriority(*state, kPriorityNormal);
    SendList(*state, CB_LIMITTEXT, kLongestTyped, 0);
    const WideText proposed = ProposedKeyword(*state);
    // Selected now, since the search below can run out of memory.
    if (proposed && AddKeyword(*state, proposed.get(), kPriorityNormal)) SendList(*state, CB_SETCURSEL, 0, 0);
    LoadKeywords(*state);
    if (proposed) SelectKeyword(*state, proposed.get());
    return TRUE;
}

// Editing.

LRESULT SelectedItem(const KeywordDialogState& state) {
    return SendList(state, CB_GETCURSEL, 0, 0);
}

void OnSelectionChange(const KeywordDialogState& state) {
    const LRESULT item = SelectedItem(state);
    if (item < 0) return;
    ShowPriority(state, static_cast<uint32_t>(SendList(state, CB_GETITEMDATA, static_cast<WPARAM>(item), 0)));
}

// Adds a typed keyword that the list lacks.
void SelectTypedKeyword(const KeywordDialogState& state) {
    wchar_t text[kKeywordSize] = {};
    GetDlgItemTextW(state.dialog, IDC_KEYWORD, text, kKeywordSize);
    if (FindKeyword(state, text) < 0) SendList(state, CB_ADDSTRING, 0, TextParameter(text));
    SelectKeyword(state, text);
}

void ApplyPriority(const KeywordDialogState& state) {
    const uint32_t priority = ChosenPriority(state);
    if (SelectedItem(state) < 0) SelectTypedKeyword(state);
    const LRESULT item = SelectedItem(state);
    if (item >= 0) SendList(state, CB_SETITEMDATA, static_cast<WPARAM>(item), priority);
}

// Saving.

enum class SaveResult { kSaved, kNoMemory, kWriteFailed };

// Writes the item only if the filter can read it, or without `readable` only if it cannot.
SaveResult WriteKeyword(const KeywordDialogState& state, DataFile& file, WPARAM item, bool readable) {
    const auto priority = static_cast<uint32_t>(SendList(state, CB_GETITEMDATA, item, 0));
    const WideText text = KeywordAt(state, static_cast<LRESULT>(item));
    const NarrowText keyword = text ? ToNarrow(text.get()) : nullptr;
    if (!keyword) return SaveResult::kNoMemory;
    const auto length = static_cast<uint32_t>(std::strlen(keyword.get()));
    if (priority == kPriorityNormal || (length <= kLongestKeyword) != readable) return SaveResult::kSaved;
    const bool written = WriteBytes(file, priority == kPriorityHigh ? "+ " : "- ", 2) &&
                         WriteBytes(file, keyword.get(), length) && WriteBytes(file, "\r\n", 2);
    return written ? SaveResult::kSaved : SaveResult::kWriteFailed;
}

SaveResult WriteItems(const KeywordDialogState& state, DataFile& file, bool readable) {
    const LRESULT count = SendList(state, CB_GETCOUNT, 0, 0);
    SaveResult result = SaveResult::kSaved;
    for (LRESULT item = 0; item < count && result == SaveResult::kSaved; ++item)
        result = WriteKeyword(state, file, static_cast<WPARAM>(item), readable);
    return result;
}

// The filter stops at a line that is too long, so such lines come last.
SaveResult WriteKeywords(const KeywordDialogState& state, DataFile& file) {
    for (const bool readable : {true, false}) {
        const SaveResult result = WriteItems(state, file, readable);
        if (result != SaveResult::kSaved) return result;
    }
    return WriteKept(file, state.rest) && CloseDataFile(file) ? SaveResult::kSaved : SaveResult::kWriteFailed;
}

// Creates an empty old file where there is none: a temporary file without an old file is then always
// complete and only lacks its name.
bool EnsureOldFile(const KeywordDialogState& state) {
    if (FileExists(state.filterPath)) return true;
    DataFile file;
    return OpenDataFile(file, state.filterPath, FileMode::kReadWrite) && CloseDataFile(file);
}

// False, with the reason shown, when the old file stays. An incomplete temporary file stays too.
bool SaveKeywords(const KeywordDialogState& state) {
    if (state.loadError != 0) {
        SetError(state.loadError);
        ShowLastError(IDS_OPEN_FILE_FAILED, state.filterPath);
        return false;
    }
    const WideText temporary = JoinPath(state.filterPath, L"~");
    DataFile file;
    if (!temporary || !EnsureOldFile(state) || !OpenDataFile(file, temporary.get(), FileMode::kReplace)) {
        ShowLastError(IDS_OPEN_FILE_FAILED, state.filterPath);
        return false;
    }
    const SaveResult result = WriteKeywords(state, file);
    if (result == SaveResult::kNoMemory) ShowNoMemory();
    if (result == SaveResult::kWriteFailed) ShowLastError(IDS_WRITE_FILTER_FAILED, temporary.get());
    if (result != SaveResult::kSaved) return false;
    (void)DeleteDataFile(state.filterPath);
    (void)RenameDataFile(temporary.get(), state.filterPath);
    return true;
}

void OnOk(const KeywordDialogState& state) {
    ApplyPriority(state);
    EndDialog(state.dialog, SaveKeywords(state) ? IDOK : IDCANCEL);
}

INT_PTR OnCommand(HWND dialog, int id, int notice) {
    auto state = static_cast<const KeywordDialogState*>(GetWindowPointer(dialog, kUserData));
    if (!state) {
        MessageBoxW(nullptr, L"Not Initialized!", L"ERROR", MB_OK | MB_ICONERROR);
        return TRUE;
    }
    if (id == IDOK) OnOk(*state);
    if (id == IDCANCEL) EndDialog(dialog, IDCANCEL);
    if (id == IDC_KEYWORD && notice == CBN_SELCHANGE) OnSelectionChange(*state);
    if (id >= IDC_KEYWORD_HIGH && id <= IDC_KEYWORD_LOW && notice == BN_CLICKED) ApplyPriority(*state);
    return TRUE;
}

}  // namespace

INT_PTR RunKeywordDialog(KeywordDialogState& state, HINSTANCE instance, HWND owner, const wchar_t* filterPath,
                         const wchar_t* proposedKeyword) {
    state.filterPath = filterPath;
    state.proposedKeyword = proposedKeyword;
    const INT_PTR result = RunDialog(instance, IDD_KEYWORDS, owner,
                                     DialogProcedure<KeywordDialogState, OnInitDialog, OnCommand>, &state);
    return result == IDOK ? IDOK : IDCANCEL;
}
