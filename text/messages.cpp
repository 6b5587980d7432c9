#include "text/messages.h"

#include <wchar.h>
#include <cstring>

#include "text/last_error.h"

namespace {

// The string buffer, followed by the instance that its texts come from.
struct StringBuffer {
    TextBuffer text;
    HINSTANCE instance;
};

StringBuffer stringBuffer;
TextBuffer errorBuffer;

}  // namespace

void SetResourceInstance(HINSTANCE instance) {
    stringBuffer.instance = instance;
}
HINSTANCE ResourceInstance() {
    return stringBuffer.instance;
}

const wchar_t* LoadResString(UINT id) {
    return LoadResString(id, stringBuffer.text);
}

const wchar_t* LoadResString(UINT id, TextBuffer& buffer) {
    const ErrorKeeper keeper;
    return LoadStringW(stringBuffer.instance, id, buffer, kTextCapacity) < 1 ? nullptr : buffer;
}

const wchar_t* LoadResStringOrEmpty(UINT id, TextBuffer& buffer) {
    if (!LoadResString(id, buffer)) buffer[0] = L'\0';
    return buffer;
}

const wchar_t* FormatLastError(const wchar_t* format) {
    return FormatLastError(format, errorBuffer);
}

const wchar_t* FormatLastError(const wchar_t* format, TextBuffer& buffer) {
    wsprintfW(buffer, format ? format : L"(%d)", GetLastError());  // writes kTextCapacity units at most
    return buffer;
}

const wchar_t* FormatText(const wchar_t* format, const wchar_t* text) {
    return FormatText(format, text, errorBuffer);
}

const wchar_t* FormatText(const wchar_t* format, const wchar_t* text, TextBuffer& buffer) {
    const wchar_t* place = format ? wcsstr(format, L"%s") : nullptr;
    if (!place) {
        CopyCut(buffer, kTextCapacity, format ? format : text);
        return buffer;
    }
    const std::size_t before = static_cast<std::size_t>(place - format);
    CopyCut(buffer, before + 1, format);
    CopyCut(buffer + before, kTextCapacity - before, text);
    const std::size_t length = wcslen(buffer);
    CopyCut(buffer + length, kTextCapacity - length, place + 2);
    return buffer;
}

void CopyCut(wchar_t* buffer, std::size_t capacity, const wchar_t* text) {
    std::size_t length = wcslen(text);
    if (length >= capacity) length = capacity - 1;
    std::memmove(buffer, text, length * sizeof(wchar_t));
    buffer[length] = L'\0';
}

void ShowLastError(UINT id, const wchar_t* caption, UINT icon) {
    MessageBoxW(nullptr, FormatLastError(LoadResString(id)), caption, MB_OK | icon);
}
