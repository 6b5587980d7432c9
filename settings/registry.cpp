#include "settings/registry.h"

#include "text/last_error.h"
#include "text/messages.h"

namespace {

bool Succeeded(LONG result) {
    return result == ERROR_SUCCESS || Fail(static_cast<unsigned>(result));
}

bool Write(const RegistryKeyOwner& key, const wchar_t* name, DWORD type, const void* data, std::size_t size) {
    return Succeeded(
        RegSetValueExW(key.Get(), name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)));
}

}  // namespace

bool OpenKey(HKEY parent, const wchar_t* path, RegistryKeyOwner& key) {
    HKEY opened = nullptr;
    DWORD disposition = 0;
    const LONG result =
        RegCreateKeyExW(parent, path, 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &opened, &disposition);
    if (!Succeeded(result)) return false;
    key.Reset(opened);
    return true;
}

bool ReadDword(const RegistryKeyOwner& key, const wchar_t* name, uint32_t& value) {
    DWORD read = 0;
    DWORD size = sizeof(read);
    if (!Succeeded(
            RegQueryValueExW(key.Get(), name, nullptr, nullptr, reinterpret_cast<BYTE*>(&read), &size))) {
        return false;
    }
    value = read;
    return true;
}

bool WriteDword(const RegistryKeyOwner& key, const wchar_t* name, uint32_t value) {
    return Write(key, name, REG_DWORD, &value, sizeof(value));
}

bool WriteBinary(const RegistryKeyOwner& key, const wchar_t* name, uint32_t value) {
    return Write(key, name, REG_BINARY, &value, sizeof(value));
}

WideText ReadText(const RegistryKeyOwner& key, const wchar_t* name) {
    DWORD size = 0;
    if (!Succeeded(RegQueryValueExW(key.Get(), name, nullptr, nullptr, nullptr, &size))) return nullptr;
    // A stored text can lack its NUL, and its size can be odd.
    WideText text = NewArray<wchar_t>(size / sizeof(wchar_t) + 2);
    if (!text) return nullptr;
    if (!Succeeded(RegQueryValueExW(key.Get(), name, nullptr, nullptr, reinterpret_cast<BYTE*>(text.get()),
                                    &size))) {
        return nullptr;
    }
    text[size / sizeof(wchar_t)] = L'\0';
    return text;
}

bool ReadTextInto(const RegistryKeyOwner& key, const wchar_t* name, wchar_t* buffer, std::size_t capacity) {
    const WideText text = ReadText(key, name);
    if (!text) return false;
    CopyCut(buffer, capacity, text.get());
    return true;
}

bool WriteText(const RegistryKeyOwner& key, const wchar_t* name, const wchar_t* text) {
    return Write(key, name, REG_SZ, text, (wcslen(text) + 1) * sizeof(wchar_t));
}

bool DeleteValue(const RegistryKeyOwner& key, const wchar_t* name) {
    const LONG result = RegDeleteValueW(key.Get(), name);
    return result == ERROR_FILE_NOT_FOUND || Succeeded(result);
}
