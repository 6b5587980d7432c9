#include "filters/keyword_filter.h"

#include "files/data_file.h"
#include "text/last_error.h"

namespace {

constexpr uint32_t kKeywordsAtOnce = 2048;  // bytes of the file that are read at a time

}  // namespace

bool OpenKeywordFile(DataFile& file, const wchar_t* path) {
    if (OpenForReading(file, path, FileMode::kRead, kKeywordsAtOnce)) return true;
    if (GetError() != kErrorFileNotFound) return false;
    const WideText saved = JoinPath(path, L"~");
    return saved && RenameDataFile(saved.get(), path) &&
           OpenForReading(file, path, FileMode::kRead, kKeywordsAtOnce);
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
