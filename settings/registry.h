// Registry access. A failure returns false with the registry's error as the last error.
#pragma once

#include <cstdint>

#include "platform/owners.h"
#include "text/owned.h"

// Opens `path` below `parent`, creating what is missing.
[[nodiscard]] bool OpenKey(HKEY parent, const wchar_t* path, RegistryKeyOwner& key);

[[nodiscard]] bool ReadDword(const RegistryKeyOwner& key, const wchar_t* name, uint32_t& value);
[[nodiscard]] bool WriteDword(const RegistryKeyOwner& key, const wchar_t* name, uint32_t value);
[[nodiscard]] bool WriteBinary(const RegistryKeyOwner& key, const wchar_t* name,
                               uint32_t value);  // REG_BINARY, 4 bytes

// A text of any length, terminated; null with the error (2 when there is no such value, 8).
WideText ReadText(const RegistryKeyOwner& key, const wchar_t* name);

// Copies such a text, cut to `capacity` units with its terminator. On false the buffer is unchanged.
[[nodiscard]] bool ReadTextInto(const RegistryKeyOwner& key, const wchar_t* name, wchar_t* buffer,
                                std::size_t capacity);

[[nodiscard]] bool WriteText(const RegistryKeyOwner& key, const wchar_t* name, const wchar_t* text);

// A missing value counts as deleted.
[[nodiscard]] bool DeleteValue(const RegistryKeyOwner& key, const wchar_t* name);
