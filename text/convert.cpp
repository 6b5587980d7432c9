#include "text/convert.h"

#include <wchar.h>
#include <cstring>

#include "platform/platform.h"

namespace {

// The buffers fit the longest result in Shift_JIS. What the system still refuses, as it may in other code
// pages, becomes an empty text.
template <class Unit>
void EndAt(Unit* buffer, int written) {
    buffer[written > 0 ? written - 1 : 0] = 0;
}

}  // namespace

WideText ToWide(const char* text) {
    const std::size_t length = std::strlen(text) + 1;
    WideText wide = NewArray<wchar_t>(length);
    if (!wide) return nullptr;
    const int units = static_cast<int>(length);
    EndAt(wide.get(), MultiByteToWideChar(TextCodePage(), 0, text, -1, wide.get(), units));
    return wide;
}

NarrowText ToNarrow(const wchar_t* text) {
    const std::size_t size = (wcslen(text) + 1) * 2;
    NarrowText narrow = NewArray<char>(size);
    if (!narrow) return nullptr;
    const int bytes = static_cast<int>(size);
    EndAt(narrow.get(),
          WideCharToMultiByte(TextCodePage(), 0, text, -1, narrow.get(), bytes, nullptr, nullptr));
    return narrow;
}

WideText CopyText(const wchar_t* text) {
    const std::size_t length = wcslen(text) + 1;
    WideText copy = NewArray<wchar_t>(length);
    if (copy) std::memcpy(copy.get(), text, length * sizeof(wchar_t));
    return copy;
}

NarrowText CopyText(const char* text) {
    const std::size_t length = std::strlen(text) + 1;
    NarrowText copy = NewArray<char>(length);
    if (copy) std::memcpy(copy.get(), text, length);
    return copy;
}
