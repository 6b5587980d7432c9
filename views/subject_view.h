// The second pane: the articles of one group, a row each, drawn by hand from the page of records that the
// group's list holds. It reports SubjectNotices to its parent. User-interface thread only.
#pragma once

#include "platform/owners.h"
#include "platform/platform.h"
#include "store/article_list.h"
#include "views/row_view.h"
#include "views/scrolling.h"

enum SubjectNotice : WORD {
    kSubjectBack = kRowBack,
    kSubjectAtEnd = kRowAtEnd,  // page down on the last page
    kSubjectOpen = 3,           // Enter, Space or a double tap on a row
};

struct SubjectView : RowView {
    ArticleList list;
    BitmapOwner readMark;
    BitmapOwner highMark;
    BitmapOwner lowMark;

    SubjectView() = default;
    SubjectView(const SubjectView&) = delete;
    SubjectView& operator=(const SubjectView&) = delete;
};

[[nodiscard]] bool RegisterSubjectViewClass(HINSTANCE instance);

// Makes the hidden window. `viewRead` and `level` are the view options.
[[nodiscard]] bool CreateSubjectView(SubjectView& view, HINSTANCE instance, HWND parent, int id,
                                     const RECT& rectangle, bool viewRead, uint32_t level);

inline void ShowSubjectView(const SubjectView& view, int showCommand) {
    ShowRowView(view, showCommand);
}

// The font and the keys' mode; a new font lays the rows out anew.
void SetSubjectAppearance(SubjectView& view, HFONT font, bool lineScroll);

// Shows another group from its first row. False with the last error; the view is empty then.
[[nodiscard]] bool OpenSubjectGroup(SubjectView& view, const wchar_t* folder, const wchar_t* group);

// Writes the open group's header back. The rows stay until the next group is opened.
bool CloseSubjectGroup(SubjectView& view);

// Shows the open group's rows under other view options, from the first.
[[nodiscard]] bool SetSubjectOptions(SubjectView& view, bool viewRead, uint32_t level);

// Gives every record the priority that the group's keywords now call for, and shows the rows from the first,
// also when that failed.
[[nodiscard]] bool RefilterSubjects(SubjectView& view);

// The cursor's record, or null when the view shows none.
const IndexRecord* CurrentSubject(const SubjectView& view);

// Change the read mark of the cursor's record, in the file too. Error 87 when there is none.
[[nodiscard]] bool ToggleSubjectRead(SubjectView& view);
[[nodiscard]] bool MarkSubjectRead(SubjectView& view);

// Moves the cursor to the next row of the list. False, and nothing moves, at its end.
[[nodiscard]] bool AdvanceSubject(SubjectView& view);
