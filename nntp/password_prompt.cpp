#include "nntp/password_prompt.h"

#include "resources/resource.h"
#include "text/convert.h"

namespace {

constexpr int kPasswordSize = 260;  // UTF-16 units, the terminator included

struct PasswordPrompt {
    const char* user = nullptr;  // not owned
    Secret* password = nullptr;  // where the entered text goes; not owned
};

// The focus goes to the password, so the dialog must not set it.
INT_PTR OnInitDialog(HWND dialog, PasswordPrompt* prompt) {
    SetWindowPointer(dialog, kUserData, prompt);
    const WideText user = ToWide(prompt->user);
    if (user) SetDlgItemTextW(dialog, IDC_PASSWORD_USER, user.get());
    SetFocus(GetDlgItem(dialog, IDC_PASSWORD_EDIT));
    return FALSE;
}

void OnOk(HWND dialog) {
    auto prompt = static_cast<PasswordPrompt*>(GetWindowPointer(dialog, kUserData));
    SecretBuffer<kPasswordSize> typed;
    GetDlgItemTextW(dialog, IDC_PASSWORD_EDIT, typed.text, kPasswordSize);
    if (prompt) *prompt->password = ToNarrow(typed.text);
    EndDialog(dialog, IDOK);
}

INT_PTR OnCommand(HWND dialog, int id, int) {
    if (id == IDOK) OnOk(dialog);
    if (id == IDCANCEL) EndDialog(dialog, IDCANCEL);
    return id == IDOK || id == IDCANCEL;
}

}  // namespace

INT_PTR RunPasswordPrompt(HINSTANCE instance, HWND owner, const char* user, Secret& password) {
    PasswordPrompt prompt{user, &password};
    return RunDialog(instance, IDD_PASSWORD, owner, DialogProcedure<PasswordPrompt, OnInitDialog, OnCommand>,
                     &prompt);
}
