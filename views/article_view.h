// The third pane: one article as wrapped lines, drawn by hand. It reports ArticleNotices to its parent.
// User-interface thread only.
#pragma once

#include "platform/platform.h"
#include "text/owned.h"
#include "views/article_layout.h"
#include "views/row_view.h"
#include "views/scrolling.h"

enum ArticleNotice : WORD {
    kArticleBack = kRowBack,
    kArticleNext = kRowAtEnd,  // also Tab and Enter
};

struct ArticleView : RowView {
    WideText text;  // header, empty line, body; lines end in CR LF. Null: no article
    ArticleLayout layout;
    bool showAllHeaders = false;  // the `ShowArticleHeader` option
    COLORREF headerColor = 0;
    COLORREF quoteColor = 0;
    // What the top line started with before the window's size began to change. Taken from the line anew at
    // each change, the place would creep to the start. It holds while the top line is `placeTop`.
    const wchar_t* place = nullptr;  // in the text
    uint32_t placeTop = 0;

    ArticleView() = default;
    ArticleView(const ArticleView&) = delete;
    ArticleView& operator=(const ArticleView&) = delete;
};

// What the settings say about the view.
struct ArticleAppearance {
    HFONT font = nullptr;
    COLORREF headerColor = 0;
    COLORREF quoteColor = 0;
    bool lineScroll = false;  // the `KeyMode` setting
    bool autoNext = false;    // the `AutoNextArticle` setting
};

// Measures in the font that is selected into `dc`, which must outlive the measuring.
TextMeasure MeasureOn(HDC dc);

[[nodiscard]] bool RegisterArticleViewClass(HINSTANCE instance);

// Makes the hidden window.
[[nodiscard]] bool CreateArticleView(ArticleView& view, HINSTANCE instance, HWND parent, int id,
                                     const RECT& rectangle);

inline void ShowArticleView(const ArticleView& view, int showCommand) {
    ShowRowView(view, showCommand);
}

void SetArticleAppearance(ArticleView& view, const ArticleAppearance& appearance);

// Show another article from its first line: a copy of the text (on error 8 the old one stays), or the buffer
// itself.
[[nodiscard]] bool SetArticleText(ArticleView& view, const wchar_t* text);
void TakeArticleText(ArticleView& view, WideText text);

// Shows the whole header, or its From and Subject lines only. False, with error 8, when the text cannot be
// laid out.
[[nodiscard]] bool SetShowAllHeaders(ArticleView& view, bool showAll);

// Puts the whole article, hidden lines included, on the clipboard as Unicode text.
[[nodiscard]] bool CopyArticle(const ArticleView& view, HWND owner);
