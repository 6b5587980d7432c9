#include "settings/settings.h"

#include "settings/registry.h"
#include "text/convert.h"
#include "text/decimal.h"
#include "text/last_error.h"
#include "text/messages.h"

namespace {

constexpr uint32_t kDefaultPort = 119;
constexpr uint32_t kDefaultLimit = 50;
constexpr uint32_t kDefaultFontSize = 14;
constexpr wchar_t kDefaultFont[] = L"Tahoma";
constexpr std::size_t kLoginSize = 256;  // characters of a user or password, terminator included

uint32_t DwordOr(const RegistryKeyOwner& key, const wchar_t* name, uint32_t missing) {
    uint32_t value = 0;
    return ReadDword(key, name, value) ? value : missing;
}

// A value that memory has no room for is not missing: the next save would write its default over it.
bool IsOutOfMemory() {
    return GetError() == kErrorNoMemory;
}

// False only when memory runs out; `missing` is set, and the buffer stays, when there is no such value.
bool ReadOptional(const RegistryKeyOwner& key, const wchar_t* name, wchar_t* buffer, std::size_t capacity,
                  bool& missing) {
    if (ReadTextInto(key, name, buffer, capacity)) return true;
    missing = true;
    return !IsOutOfMemory();
}

// What the program cannot run without: a missing value takes its default and is noted.
bool ReadRequired(const RegistryKeyOwner& key, Settings& settings, bool& complete) {
    settings.Server[0] = settings.DataPath[0] = L'\0';
    settings.Port = kDefaultPort;
    settings.Limit = kDefaultLimit;
    bool missing = false;
    if (!ReadOptional(key, L"Server", settings.Server, kServerSize, missing)) return false;
    if (!ReadDword(key, L"Port", settings.Port)) missing = true;
    if (!ReadOptional(key, L"DataPath", settings.DataPath, kDataPathSize, missing)) return false;
    if (!ReadDword(key, L"Limit", settings.Limit)) missing = true;
    if (missing) complete = false;
    return true;
}

bool IsBlank(const char* text) {
    while (*text == ' ' || *text == '\t')
        ++text;
    return *text == '\0';
}

template <class Text>
void DropBlank(Text& text) {
    if (text && IsBlank(text.get())) text.reset();
}

// A user or password: missing is no failure, one that is there and cannot be read is.
template <class Text>
bool ReadLogin(const RegistryKeyOwner& key, const wchar_t* name, Text& login) {
    login.reset();
    const WideSecret stored = ReadText(key, name);
    if (!stored) return GetError() == ERROR_FILE_NOT_FOUND;
    SecretBuffer<kLoginSize> cut;
    CopyCut(cut.text, kLoginSize, stored.get());
    login = ToNarrow(cut.text);
    if (!login) return false;
    DropBlank(login);
    return true;
}

bool ReadBehaviour(const RegistryKeyOwner& key, Settings& settings) {
    bool missing = false;
    settings.KeyMode = DwordOr(key, L"KeyMode", 0);
    settings.AutoNextArticle = DwordOr(key, L"AutoNextArticle", 1);
    settings.Dialup = DwordOr(key, L"Dialup", 0);
    settings.EntryName[0] = L'\0';
    if (!ReadOptional(key, L"EntryName", settings.EntryName, kEntryNameSize, missing)) return false;
    settings.DisconnectWaitTime = DwordOr(key, L"DisconnectWaitTime", 0);
    return true;
}

bool ReadAppearance(const RegistryKeyOwner& key, Settings& settings) {
    bool missing = false;
    CopyCut(settings.FontName, kFontNameSize, kDefaultFont);
    if (!ReadOptional(key, L"FontName", settings.FontName, kFontNameSize, missing)) return false;
    settings.FontSizeA = static_cast<int32_t>(DwordOr(key, L"FontSizeA", kDefaultFontSize));
    settings.FontSizeS = static_cast<int32_t>(DwordOr(key, L"FontSizeS", kDefaultFontSize));
    // A face that gives no font leaves none: the views are then given the system's.
    (void)MakeViewFont(settings.FontName, settings.FontSizeA, settings.ArticleFont);
    (void)MakeViewFont(settings.FontName, settings.FontSizeS, settings.SubjectFont);
    settings.HeaderColor = DwordOr(key, L"HeaderColor", 0);
    settings.ReferenceLine = DwordOr(key, L"ReferenceLine", 0);
    return true;
}

// False only when memory runs out.
bool ReadNarrow(const RegistryKeyOwner& key, const wchar_t* name, NarrowText& value) {
    const WideText text = ReadText(key, name);
    value = text ? ToNarrow(text.get()) : nullptr;
    return value || !IsOutOfMemory();
}

bool ReadIdentity(const RegistryKeyOwner& key, Settings& settings) {
    if (!ReadNarrow(key, L"UserName", settings.UserName) ||
        !ReadNarrow(key, L"MailAddress", settings.MailAddress) ||
        !ReadNarrow(key, L"Organization", settings.Organization)) {
        return false;
    }
    DropBlank(settings.UserName);
    DropBlank(settings.MailAddress);
    // Without a mail address a blank organisation stays as it is stored.
    if (settings.MailAddress) DropBlank(settings.Organization);
    return true;
}

bool MakeDraftPath(Settings& settings) {
    constexpr std::size_t kAround = 5 + 3;  // "draft", two backslashes and the terminator
    settings.DraftPath = NewArray<wchar_t>(wcslen(settings.DataPath) + kAround);
    if (!settings.DraftPath) return Fail(kErrorNoMemory);
    // A saved data folder ends in a backslash, so the path has two in a row; the system reads them as one.
    wsprintfW(settings.DraftPath.get(), L"%s\\%s\\", settings.DataPath, L"draft");
    return true;
}

bool ReadPaths(const RegistryKeyOwner& key, Settings& settings) {
    settings.EditorPath = ReadText(key, L"EditorPath");
    if (!settings.EditorPath && !IsOutOfMemory()) settings.EditorPath = CopyText(L"");
    return settings.EditorPath ? MakeDraftPath(settings) : Fail(kErrorNoMemory);
}

// Null deletes the value.
bool WriteLogin(const RegistryKeyOwner& key, const wchar_t* name, const char* login) {
    if (!login) return DeleteValue(key, name);
    const WideSecret text = ToWide(login);
    return text && WriteText(key, name, text.get());
}

bool WriteAccount(const RegistryKeyOwner& key, const Settings& settings) {
    // A password without a user means nothing.
    return WriteLogin(key, L"UserID", settings.UserID.get()) &&
           WriteLogin(key, L"Password", settings.UserID ? settings.Password.get() : nullptr);
}

bool WriteIdentity(const RegistryKeyOwner& key, const wchar_t* name, const NarrowText& value) {
    const WideText text = ToWide(value ? value.get() : "");
    return text && WriteText(key, name, text.get());
}

void AppendBackslash(wchar_t (&path)[kDataPathSize]) {
    const std::size_t length = wcslen(path);
    if (length == 0 || path[length - 1] == L'\\' || length + 1 >= kDataPathSize) return;
    path[length] = L'\\';
    path[length + 1] = L'\0';
}

bool WriteServer(const RegistryKeyOwner& key, Settings& settings) {
    if (!WriteText(key, L"Server", settings.Server) || !WriteDword(key, L"Port", settings.Port)) return false;
    AppendBackslash(settings.DataPath);
    return WriteText(key, L"DataPath", settings.DataPath) && WriteDword(key, L"Limit", settings.Limit);
}

bool WriteBehaviour(const RegistryKeyOwner& key, const Settings& settings) {
    return WriteDword(key, L"KeyMode", settings.KeyMode) &&
           WriteDword(key, L"AutoNextArticle", settings.AutoNextArticle) &&
           WriteDword(key, L"Dialup", settings.Dialup) && WriteText(key, L"EntryName", settings.EntryName) &&
           WriteDword(key, L"DisconnectWaitTime", settings.DisconnectWaitTime);
}

// The colours are binary values, unlike the other numbers: that is how they have always been stored.
bool WriteAppearance(const RegistryKeyOwner& key, const Settings& settings) {
    return WriteText(key, L"FontName", settings.FontName) &&
           WriteDword(key, L"FontSizeA", static_cast<uint32_t>(settings.FontSizeA)) &&
           WriteDword(key, L"FontSizeS", static_cast<uint32_t>(settings.FontSizeS)) &&
           WriteBinary(key, L"HeaderColor", settings.HeaderColor) &&
           WriteBinary(key, L"ReferenceLine", settings.ReferenceLine);
}

}  // namespace

void InitSettings(Settings& settings) {
    FreeSettings(settings);
    settings.ArticleFont.Reset();
    settings.SubjectFont.Reset();
}

void FreeSettings(Settings& settings) {
    settings.UserID.reset();
    settings.Password.reset();
    settings.UserName.reset();
    settings.MailAddress.reset();
    settings.Organization.reset();
    settings.EditorPath.reset();
    settings.DraftPath.reset();
}

bool LoadSettings(Settings& settings, bool& SettingsComplete) {
    SettingsComplete = true;
    RegistryKeyOwner key;
    if (!OpenKey(HKEY_CURRENT_USER, kProgramKey, key)) return false;
    if (!ReadRequired(key, settings, SettingsComplete)) return false;
    if (!ReadLogin(key, L"UserID", settings.UserID) || !ReadLogin(key, L"Password", settings.Password))
        return false;
    return ReadBehaviour(key, settings) && ReadAppearance(key, settings) && ReadIdentity(key, settings) &&
           ReadPaths(key, settings);
}

bool SaveSettings(Settings& settings) {
    RegistryKeyOwner key;
    return OpenKey(HKEY_CURRENT_USER, kProgramKey, key) && WriteServer(key, settings) &&
           WriteAccount(key, settings) && WriteBehaviour(key, settings) && WriteAppearance(key, settings) &&
           WriteIdentity(key, L"UserName", settings.UserName) &&
           WriteIdentity(key, L"MailAddress", settings.MailAddress) &&
           WriteIdentity(key, L"Organization", settings.Organization) &&
           WriteText(key, L"EditorPath", settings.EditorPath ? settings.EditorPath.get() : L"") &&
           MakeDraftPath(settings);
}

bool MakeViewFont(const wchar_t* face, int32_t size, FontOwner& font) {
    constexpr LONG kRegularWeight = 400;
    font.Reset();
    if (size == kSystemFont) return true;
    LOGFONTW description = {};
    description.lfHeight = size;
    description.lfWeight = kRegularWeight;
    description.lfCharSet = DEFAULT_CHARSET;
    CopyCut(description.lfFaceName, LF_FACESIZE, face);
    font.Reset(CreateFontIndirectW(&description));
    return static_cast<bool>(font);
}

bool ParseDecimal(const wchar_t* text, uint32_t& value) {
    const uint32_t parsed = TakeDecimal(text);
    if (*text) return false;
    value = parsed;
    return true;
}

void StripTrailingBackslashes(wchar_t* text) {
    std::size_t length = wcslen(text);
    while (length > 0 && text[length - 1] == L'\\')
        text[--length] = L'\0';
}
