// The data folder's own files: the draft folder and the three lists. The path ends in a backslash.
#pragma once

// Makes the "draft" folder unless it exists.
[[nodiscard]] bool MakeDraftFolder(const wchar_t* folder);

// Deletes every "*.bak" file of the draft folder. Nothing is reported: what cannot go stays.
void DeleteDraftBackups(const wchar_t* folder);

// Makes "active.dat", "category.dat" and "group.dat" where they are missing.
[[nodiscard]] bool MakeListFiles(const wchar_t* folder);
