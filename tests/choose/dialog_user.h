// Someone who uses modal dialogs as a person does. A timer of the dialog's own thread notes and confirms each
// message box, and plays one step after the other in the dialog below it once that stands and answers.
//
//     DialogUser user(Steps(IDC_KEYWORD, "high | OK", Play));
//     EXPECT_EQ(RunKeywordDialog(...), 1);
//     EXPECT_THAT(user.boxes, testing::IsEmpty());
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/platform.h"

// UTF-8.
std::string Utf8(const std::wstring& text);
std::wstring Wide(const std::string& utf8);

struct UserStep {
    int control = 0;                 // the step is for the dialog with this control
    std::function<bool(HWND)> play;  // false: not yet
};

// Clicks a button, which must be enabled; an id without a button is sent as a command.
void Press(HWND dialog, int id);

// One step for each part of a script, which stands between " | " signs; `play` does it.
std::vector<UserStep> Steps(int control, const std::string& script,
                            bool (*play)(HWND dialog, const std::string& part));

class DialogUser {
  public:
    explicit DialogUser(std::vector<UserStep> steps);
    // Fails the test when steps are left that may not be.
    ~DialogUser();
    DialogUser(const DialogUser&) = delete;
    DialogUser& operator=(const DialogUser&) = delete;

    // Each box in the order of their coming: icon ('!', 'x'), caption and text with '|' between them, UTF-8.
    std::vector<std::string> boxes;

    // For a dialog that closes by itself: on a busy machine it may do so before all steps were played.
    bool mayComeTooLate = false;

  private:
    static void CALLBACK OnTimer(HWND, UINT, UINT_PTR, DWORD);
    bool ConfirmBox(const std::vector<HWND>& dialogs);
    void PlayStep(const std::vector<HWND>& dialogs);

    std::vector<UserStep> steps_;
    size_t next_ = 0;
    UINT_PTR timer_ = 0;
    DWORD movedAt_ = 0;  // tick of the last thing done
};
