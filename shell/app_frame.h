// The main frame: its state, its window, and the program from start to end. One instance, on the entry
// function's stack, for the life of the process.
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
    HWND groupBar = nullptr;  // the menu bars are owned by the system
    HWND subjectBar = nullptr;
    HWND articleBar = nullptr;
    HMENU subjectPopup = nullptr;  // owned by their bars
    HMENU articlePopup = nullptr;
    HACCEL accelerators = nullptr;
    bool busy = false;  // a modal operation or a run is under way; set and cleared, never read
    bool alone = true;  // while the frame is being made or RunAlone's command runs
    ViewKind currentView = ViewKind::kDrafts;  // so that the first switch to the groups takes place
    // Destroyed in the order article, subject, group, drafts.
    std::unique_ptr<DraftTree> draftTree;
    std::unique_ptr<GroupView> groupView;
    std::unique_ptr<SubjectView> subjectView;
    std::unique_ptr<ArticleView> articleView;
    uint32_t currentGroupRow = 0;  // the row of the group open in the subject view
    bool viewReadArticles = false;
    bool showArticleHeader = false;
    uint32_t priorityLevel = 0;
    bool dialled = false;           // this program dialled the line that is up
    HRASCONN connection = nullptr;  // the call being made, or up
    DownloadJob* job = nullptr;     // the run under way, until its result has been shown; the worker owns it
                                    // until it reports its end
    bool ended = false;             // the main window has been destroyed
    TurnOwner turn;  // held from the search for another instance's frame until this frame exists
};

// Posted by a second instance. Every other message to the frame is declared by the subsystem that sends it.
constexpr UINT kWakeMessage = 0x8002;

constexpr wchar_t kFrameClass[] = L"PelnorMainFrmWnd";

[[nodiscard]] bool RegisterFrameClass(HINSTANCE instance);

// Registers the window classes, makes the main frame with its panes and shows it; the frame record outlives
// its window. False with the last error. A start that the user ended leaves `ended` set.
[[nodiscard]] bool OpenFrame(AppFrame& frame, HINSTANCE instance, int showCommand);

// Runs Pelnor: a second instance brings the first one forward and ends. Returns the process's exit code.
int RunPelnor(HINSTANCE instance, int showCommand);

// Makes the data folder's own files, brings every subscribed group's index up to date and fills the group
// view. A failure is shown to the user.
[[nodiscard]] bool ReloadData(AppFrame& frame);

// Reads the settings that the properties sheet has stored, and shows what they change.
void UseNewSettings(AppFrame& frame);
