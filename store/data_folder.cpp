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

bool MakeListFiles(const wchar_t* folder) {
    return MakeListFile(folder, L"active.dat") && MakeListFile(folder, L"category.dat") &&
           MakeListFile(folder, L"group.dat");
}
