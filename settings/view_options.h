// The view options: each is a number in a subkey of the program's key, read and stored on its own.
#pragma once

#include <cstdint>

#include "platform/owners.h"

constexpr wchar_t kGroupViewSubkey[] = L"GroupView";
constexpr wchar_t kSubjectViewSubkey[] = L"SubjectView";
constexpr wchar_t kArticleViewSubkey[] = L"ArticleView";

// Opens a view's subkey, creating what is missing. False with the registry's error.
[[nodiscard]] bool OpenViewSubkey(const wchar_t* subkey, RegistryKeyOwner& key);

// False with the registry's error, also when the value is missing.
[[nodiscard]] bool ReadViewOption(const wchar_t* subkey, const wchar_t* name, uint32_t& value);
[[nodiscard]] bool WriteViewOption(const wchar_t* subkey, const wchar_t* name, uint32_t value);

// Whether the subject view lists read articles too; stored as 1 or 0. Missing: 0.
bool ReadViewReadArticle();
[[nodiscard]] bool WriteViewReadArticle(bool value);

// 2: high only; 0: normal too; 1: everything. Missing: 1.
uint32_t ReadPriorityViewLevel();
[[nodiscard]] bool WritePriorityViewLevel(uint32_t value);

// Whether the article view shows the whole header; stored as 1 or 0. Missing: 0.
bool ReadShowArticleHeader();
[[nodiscard]] bool WriteShowArticleHeader(bool value);
