#include "tests/faults/user.h"

#include <utility>

#include "tests/faults/machine.h"
#include "tests/support/imports.h"

namespace {

std::string boxes;
std::function<void(HWND)> dialogUser;
INT_PTR dialogResult = 0;
bool refusesDialogs = false;

std::string Utf8(const wchar_t* text) {
    char bytes[2048] = "?";
    WideCharToMultiByte(CP_UTF8, 0, text ? text : L"(no text)", -1, bytes, sizeof(bytes), nullptr, nullptr);
    return bytes;
}

int WINAPI AnswerBox(HWND, const wchar_t* text, const wchar_t* caption, UINT) {
    boxes += Utf8(caption) + ": " + Utf8(text) + "\n";
    return IDOK;
}

HWND WINAPI MakeDialog(HINSTANCE instance, const DLGTEMPLATE* layout, HWND owner, DLGPROC procedure,
                       LPARAM parameter) {
    static const auto make = RealFunction<decltype(&MakeDialog)>("CreateDialogIndirectParamW", L"user32.dll");
    return refusesDialogs ? nullptr : make(instance, layout, owner, procedure, parameter);
}

// The dialog is real, but its user needs no message loop: what was posted to it comes when he is done.
INT_PTR WINAPI RunDialogForUser(HINSTANCE instance, const DLGTEMPLATE* layout, HWND owner, DLGPROC procedure,
                                LPARAM parameter) {
    dialogResult = -1;
    const HWND dialog = MakeDialog(instance, layout, owner, procedure, parameter);
    RunThreads();
    const auto user = std::exchange(dialogUser, nullptr);
    if (user && dialog) user(dialog);
    MSG message;
    while (dialog && dialogResult == -1 && PeekMessageW(&message, dialog, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
    if (dialog) DestroyWindow(dialog);
    return dialogResult;
}

BOOL WINAPI NoteDialogResult(HWND, INT_PTR result) {
    dialogResult = result;
    return TRUE;
}

HCURSOR WINAPI KeepCursor(HCURSOR) {
    return nullptr;
}

}  // namespace

IN_PLACE_OF(SetCursor, KeepCursor)
IN_PLACE_OF(MessageBoxW, AnswerBox)
IN_PLACE_OF(CreateDialogIndirectParamW, MakeDialog)
IN_PLACE_OF(DialogBoxIndirectParamW, RunDialogForUser)
IN_PLACE_OF(EndDialog, NoteDialogResult)

std::string TakeBoxes() {
    return std::exchange(boxes, std::string());
}

void UseNextDialog(std::function<void(HWND)> user) {
    dialogUser = std::move(user);
}

void RefuseDialogs(bool refuse) {
    refusesDialogs = refuse;
}
