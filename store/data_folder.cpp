#include "store/data_folder.h"

#include "files/data_file.h"
#include "text/last_error.h"

namespace {

constexpr wchar_t kDraftName[] = L"draft";

bool MakeListFile(const wchar_t* folder, const wchar_t* name) {
    const WideText path = JoinPath(folder, name);
    DataFile file;
    return path && OpenDataFile(file, path.get(), FileMode::kReadWrite) && CloseDataFile(file);
}

// ".id~" or ".lo~", in the case that the file system likes.
bool IsOfDeletion(const wchar_t* name) {
    const std::size_t length = wcslen(name);
    if (length < 4 || name[length - 4] != L'.' || name[length - 1] != L'~') return false;
    const int first = name[length - 3] | 0x20, second = name[length - 2] | 0x20;
    return (first == 'i' && second == 'd') || (first == 'l' && second == 'o');
}

// What a search says that has found all there is.
bool IsEndOfList(unsigned error) {
    return error == kErrorFileNotFound || error == ERROR_NO_MORE_FILES;
}

}  // namespace

bool MakeDraftFolder(const wchar_t* folder) {
    const WideText path = JoinPath(folder, kDraftName);
    if (!path) return false;
    if (CreateDirectoryW(path.get(), nullptr)) return true;
    return GetError() == kErrorFileExists || GetError() == kErrorAlreadyExists;
}

void DeleteDraftBackups(const wchar_t* folder) {
    const WideText draft = JoinPath(folder, L"draft\\");
    const WideText pattern = draft ? JoinPath(draft.get(), L"*.bak") : nullptr;
    if (!pattern) return;
    FoundFile found;
    const FindOwner find(FindFirst(pattern.get(), found));
    if (!find) return;
    do {
        const WideText path = JoinPath(draft.get(), found.cFileName);
        if (path) (void)DeleteDataFile(path.get());
    } while (FindNext(find.Get(), found));
}

bool MayHoldCutOffDeletion(const wchar_t* folder) {
    const WideText pattern = JoinPath(folder, L"*~");
    if (!pattern) return true;
    FoundFile found;
    const FindOwner find(FindFirst(pattern.get(), found));
    for (bool more = static_cast<bool>(find); more; more = FindNext(find.Get(), found)) {
        if (IsOfDeletion(found.cFileName)) return true;
    }
    return !IsEndOfList(GetError());
}

bool MakeListFiles(const wchar_t* folder) {
    return MakeListFile(folder, L"active.dat") && MakeListFile(folder, L"category.dat") &&
           MakeListFile(folder, L"group.dat");
}
