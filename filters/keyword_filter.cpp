#include "filters/keyword_filter.h"

#include "store/file.h"
#include "text/last_error.h"

bool LoadKeywordFilter(KeywordFilter& filter, const wchar_t* path) {
    constexpr uint32_t kLineSize = 512;
    ClearKeywordFilter(filter);
    DataFile file;
    if (!OpenDataFile(file, path, FileMode::kRead)) return GetError() == kErrorFileNotFound;
    char line[kLineSize];
    while (ReadLine(file, line, kLineSize, true)) {
        if (!AddKeywordLine(filter, line)) return false;
    }
    return true;
}
