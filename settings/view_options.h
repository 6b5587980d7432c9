// The view options: one number each in a subkey of the program's key, read and written one at a time.
#pragma once

#include <cstdint>

#include "platform/owners.h"

constexpr wchar_t kGroupViewSubkey[] = L"GroupView";
constexpr wchar_t kSubjectViewSubkey[] = L"SubjectView";
constexpr wchar_t kArticleViewSubkey[] = L"ArticleView";

// Opens a view's subkey, making what is missing of it. False with the registry's error.
[[nodiscard]] bool OpenViewSubkey(const wchar_t* subkey, RegistryKeyOwner& key);

// False with the registry's error, also when the value is missing.
[[nodiscard]] bool ReadViewOption(const wchar_t* subkey, const wchar_t* name, uint32_t& value);
[[nodiscard]] bool WriteViewOption(const wchar_t* subkey, const wchar_t* name, uint32_t value);

// 1: the subject view lists read articles too. Missing: 0.
uint32_t ReadViewReadArticle();
[[nodiscard]] bool WriteViewReadArticle(uint32_t value);

// 2: high only; 0: normal too; 1: everything. Missing: 1.
uint32_t ReadPriorityViewLevel();
[[nodiscard]] bool WritePriorityViewLevel(uint32_t value);

// 1: the article view shows the whole header. Missing: 0.
uint32_t ReadShowArticleHeader();
[[nodiscard]] bool WriteShowArticleHeader(uint32_t value);
