#include "settings/view_options.h"

#include "settings/registry.h"
#include "settings/settings.h"

namespace {

constexpr wchar_t kViewReadArticle[] = L"ViewReadArticle";
constexpr wchar_t kPriorityViewLevel[] = L"PriorityViewLevel";
constexpr wchar_t kShowArticleHeader[] = L"ShowArticleHeader";

uint32_t OptionOr(const wchar_t* subkey, const wchar_t* name, uint32_t missing) {
    uint32_t value = 0;
    return ReadViewOption(subkey, name, value) ? value : missing;
}

}  // namespace

bool OpenViewSubkey(const wchar_t* subkey, RegistryKeyOwner& key) {
    RegistryKeyOwner program;
    return OpenKey(HKEY_CURRENT_USER, kProgramKey, program) && OpenKey(program.Get(), subkey, key);
}

bool ReadViewOption(const wchar_t* subkey, const wchar_t* name, uint32_t& value) {
    RegistryKeyOwner key;
    return OpenViewSubkey(subkey, key) && ReadDword(key, name, value);
}

bool WriteViewOption(const wchar_t* subkey, const wchar_t* name, uint32_t value) {
    RegistryKeyOwner key;
    return OpenViewSubkey(subkey, key) && WriteDword(key, name, value);
}

uint32_t ReadViewReadArticle() {
    return OptionOr(kSubjectViewSubkey, kViewReadArticle, 0);
}
bool WriteViewReadArticle(uint32_t value) {
    return WriteViewOption(kSubjectViewSubkey, kViewReadArticle, value);
}

uint32_t ReadPriorityViewLevel() {
    return OptionOr(kSubjectViewSubkey, kPriorityViewLevel, 1);
}
bool WritePriorityViewLevel(uint32_t value) {
    return WriteViewOption(kSubjectViewSubkey, kPriorityViewLevel, value);
}

uint32_t ReadShowArticleHeader() {
    return OptionOr(kArticleViewSubkey, kShowArticleHeader, 0);
}
bool WriteShowArticleHeader(uint32_t value) {
    return WriteViewOption(kArticleViewSubkey, kShowArticleHeader, value);
}
