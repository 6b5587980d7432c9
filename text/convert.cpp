#include "text/convert.h"

#include <wchar.h>
#include <cstring>

#include "platform/platform.h"
#include "text/last_error.h"

namespace {

// The buffers are made for the longest result in Shift_JIS; what the system refuses all the same, as it may
// in other code pages, reads as an empty text.
void EndAt(wchar_t* buffer, int written) {
    buffer[written > 0 ? written - 1 : 0] = L'\0';
}
void EndAt(char* buffer, int written) {
    buffer[written > 0 ? written - 1 : 0] = '\0';
}

}  // namespace

WideText ToWide(const char* text) {
    const std::size_t length = std::strlen(text) + 1;
    WideText wide = NewArray<wchar_t>(length);
    if (!wide) {
        SetError(kErrorNoMemory);
        return nullptr;
    }
    const int units = static_cast<int>(length);
    EndAt(wide.get(), MultiByteToWideChar(TextCodePage(), 0, text, -1, wide.get(), units));
    return wide;
}

NarrowText ToNarrow(const wchar_t* text) {
    const std::size_t size = (wcslen(text) + 1) * 2;
    NarrowText narrow = NewArray<char>(size);
    if (!narrow) {
        SetError(kErrorNoMemory);
        return nullptr;
    }
    const int bytes = static_cast<int>(size);
    EndAt(narrow.get(),
          WideCharToMultiByte(TextCodePage(), 0, text, -1, narrow.get(), bytes, nullptr, nullptr));
    return narrow;
}

WideText CopyText(const wchar_t* text) {
    const std::size_t length = wcslen(text) + 1;
    WideText copy = NewArray<wchar_t>(length);
    if (copy) {
        std::memcpy(copy.get(), text, length * sizeof(wchar_t));
    } else {
        SetError(kErrorNoMemory);
    }
    return copy;
}

NarrowText CopyText(const char* text) {
    const std::size_t length = std::strlen(text) + 1;
    NarrowText copy = NewArray<char>(length);
    if (copy) {
        std::memcpy(copy.get(), text, length);
    } else {
        SetError(kErrorNoMemory);
    }
    return copy;
}
