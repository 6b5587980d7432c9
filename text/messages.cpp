#include "text/messages.h"

#include <wchar.h>
#include <cstring>

namespace {

// The string buffer, followed by the instance that its texts come from.
struct StringBuffer {
    wchar_t text[kTextCapacity];
    HINSTANCE instance;
};

StringBuffer stringBuffer;
wchar_t errorBuffer[kTextCapacity + 16];

}  // namespace

void SetResourceInstance(HINSTANCE instance) {
    stringBuffer.instance = instance;
}
HINSTANCE ResourceInstance() {
    return stringBuffer.instance;
}

const wchar_t* LoadResString(UINT id) {
    const int length = LoadStringW(stringBuffer.instance, id, stringBuffer.text, kTextCapacity);
    return length < 1 ? nullptr : stringBuffer.text;
}

const wchar_t* FormatLastError(const wchar_t* format) {
    const DWORD error = GetLastError();
    wsprintfW(errorBuffer, format ? format : L"(%d)", error);
    return errorBuffer;
}

const wchar_t* FormatText(const wchar_t* format, const wchar_t* text) {
    const wchar_t* place = format ? wcsstr(format, L"%s") : nullptr;
    if (!place) {
        CopyCut(errorBuffer, kTextCapacity, format ? format : text);
        return errorBuffer;
    }
    const std::size_t before = static_cast<std::size_t>(place - format);
    CopyCut(errorBuffer, before + 1, format);
    CopyCut(errorBuffer + before, kTextCapacity - before, text);
    const std::size_t length = wcslen(errorBuffer);
    CopyCut(errorBuffer + length, kTextCapacity - length, place + 2);
    return errorBuffer;
}

void CopyCut(wchar_t* buffer, std::size_t capacity, const wchar_t* text) {
    std::size_t length = wcslen(text);
    if (length >= capacity) length = capacity - 1;
    std::memmove(buffer, text, length * sizeof(wchar_t));
    buffer[length] = L'\0';
}

void ShowLastError(UINT id, const wchar_t* caption, UINT icon) {
    const DWORD error = GetLastError();
    const wchar_t* format = LoadResString(id);
    SetLastError(error);
    MessageBoxW(nullptr, FormatLastError(format), caption, MB_OK | icon);
}
