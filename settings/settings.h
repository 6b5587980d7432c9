// The program's configuration, stored under kProgramKey in HKEY_CURRENT_USER.
#pragma once

#include <cstdint>

#include "platform/owners.h"
#include "text/owned.h"

constexpr wchar_t kProgramKey[] = L"Software\\marrowby\\Pelnor";

constexpr int kServerSize = 260;  // characters, the terminator included
constexpr int kDataPathSize = 260;
constexpr int kEntryNameSize = 21;
constexpr int kFontNameSize = LF_FACESIZE;
constexpr int32_t kSystemFont = -1;  // a font size: draw with the system's font

// Each member is named after its registry value.
struct Settings {
    wchar_t Server[kServerSize] = {};      // name or dotted address
    wchar_t DataPath[kDataPathSize] = {};  // ends in a backslash once saved
    uint32_t Port = 0;
    uint32_t Limit = 0;            // most articles a group and run
    uint32_t KeyMode = 0;          // 1: scroll keys of the article view move one line
    uint32_t AutoNextArticle = 0;  // 1: scrolling past an article's end opens the next
    uint32_t Dialup = 0;           // 1: dial EntryName before connecting
    wchar_t EntryName[kEntryNameSize] = {};
    uint32_t DisconnectWaitTime = 0;  // seconds before the line is hung up
    NarrowText UserID;                // null: the server wants no login
    Secret Password;                  // null: none stored
    NarrowText UserName;
    NarrowText MailAddress;
    NarrowText Organization;
    wchar_t FontName[kFontNameSize] = {};
    int32_t FontSizeA = 0;  // height in the article view, or kSystemFont
    int32_t FontSizeS = 0;  // in the subject view
    FontOwner ArticleFont;  // none with kSystemFont
    FontOwner SubjectFont;
    COLORREF HeaderColor = 0;
    COLORREF ReferenceLine = 0;  // colour of quoted lines
    COLORREF SampleColor = 0;    // what the colour page previews; not stored
    WideText EditorPath;         // never null after a load
    WideText DraftPath;          // DataPath "\draft\"; not stored
};

// Frees the texts and the fonts.
void InitSettings(Settings& settings);

// Frees the texts. The fonts stay.
void FreeSettings(Settings& settings);

// Fills the record; a missing value takes its default. `SettingsComplete` says whether server, port, data
// folder and limit were all there. Fails when the key cannot be opened, a stored user or password cannot be
// read, or memory runs out (8).
[[nodiscard]] bool LoadSettings(Settings& settings, bool& SettingsComplete);

// Writes every value and stops at the first that fails. Appends the backslash that `DataPath` lacks.
[[nodiscard]] bool SaveSettings(Settings& settings);

// Replaces `font` with one of this face and height, or with none for kSystemFont.
[[nodiscard]] bool MakeViewFont(const wchar_t* face, int32_t size, FontOwner& font);

// Digits only; the empty text is 0. No check for overflow.
[[nodiscard]] bool ParseDecimal(const wchar_t* text, uint32_t& value);

void StripTrailingBackslashes(wchar_t* text);
