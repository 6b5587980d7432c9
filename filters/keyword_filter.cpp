#include "filters/keyword_filter.h"

#include "files/data_file.h"
#include "text/last_error.h"

bool OpenKeywordFile(DataFile& file, const wchar_t* path) {
    if (OpenDataFile(file, path, FileMode::kRead)) return true;
    if (GetError() != kErrorFileNotFound) return false;
    const WideText saved = JoinPath(path, L"~");
    return saved && RenameDataFile(saved.get(), path) && OpenDataFile(file, path, FileMode::kRead);
}

bool LoadKeywordFilter(KeywordFilter& filter, const wchar_t* path) {
    ClearKeywordFilter(filter);
    DataFile file;
    if (!OpenKeywordFile(file, path)) return GetError() == kErrorFileNotFound;
    char line[kKeywordLineSize];
    while (ReadLine(file, line, kKeywordLineSize, true)) {
        if (!AddKeywordLine(filter, line)) return false;
    }
    return true;
}
