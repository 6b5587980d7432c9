// The main frame's state: one instance, on the entry function's stack, for the life of the process.
#pragma once

#include <memory>

#include "drafts/draft_tree.h"
#include "nntp/download_job.h"
#include "platform/platform.h"
#include "platform/ras.h"
#include "settings/settings.h"
#include "views/article_view.h"
#include "views/group_view.h"
#include "views/subject_view.h"

enum class ViewKind { kGroup = 0, kSubject = 1, kArticle = 2, kDrafts = 3 };

struct AppFrame {
    HWND mainWindow = nullptr;
    HINSTANCE instance = nullptr;
    Settings settings;
    HWND groupBar = nullptr;  // the menu bars are the system's
    HWND subjectBar = nullptr;
    HWND articleBar = nullptr;
    HMENU subjectPopup = nullptr;  // kept by their bars
    HMENU articlePopup = nullptr;
    HACCEL accelerators = nullptr;
    bool busy = false;  // a modal operation or a run is under way; kept, asked by nobody
    bool alone = true;  // the frame is being made, or RunAlone's command is under way
    ViewKind currentView = ViewKind::kDrafts;  // the first switch to the group view finds another one current
    // Declared so that they go in the order article, subject, group, drafts.
    std::unique_ptr<DraftTree> draftTree;
    std::unique_ptr<GroupView> groupView;
    std::unique_ptr<SubjectView> subjectView;
    std::unique_ptr<ArticleView> articleView;
    uint32_t currentGroupRow = 0;  // of the group open in the subject view
    uint32_t viewReadArticles = 0;
    uint32_t showArticleHeader = 0;
    uint32_t priorityLevel = 0;
    bool dialled = false;           // the line that is up was dialled by this program
    HRASCONN connection = nullptr;  // of the call that is under way or up
    DownloadJob* job = nullptr;     // the run under way, until its end has been shown; kept by a worker that
                                    // the program's end cuts off
    bool ended = false;             // the main window has been there and is gone
    TurnOwner turn;  // the starts' turn, from the search for another frame until this one is there
};

// From a second instance. The subsystems' headers declare the other messages that reach the frame.
constexpr UINT kWakeMessage = 0x8002;

constexpr wchar_t kFrameClass[] = L"PelnorMainFrmWnd";
