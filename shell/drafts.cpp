#include "shell/drafts.h"

#include "drafts/file_chooser.h"
#include "resources/resource.h"
#include "shell/view_switch.h"
#include "text/messages.h"

namespace {

void ShowMissingProperty(UINT textId) {
    wchar_t caption[kTextCapacity];
    const wchar_t* text = LoadResString(IDS_PROPERTIES_MISSING);
    CopyCut(caption, kTextCapacity, text ? text : L"");
    MessageBoxW(nullptr, LoadResString(textId), caption, MB_OK | MB_ICONEXCLAMATION);
}

// Writing itself is not part of this version: the command checks who would write.
void Compose(const Settings& settings) {
    if (!settings.UserName) {
        ShowMissingProperty(IDS_SET_USER_NAME);
    } else if (!settings.MailAddress) {
        ShowMissingProperty(IDS_SET_MAIL_ADDRESS);
    } else {
        MessageBoxW(nullptr, L"Compoe!", L"COMPOSE", MB_OK);
    }
}

void ChooseExe(const AppFrame& frame) {
    FileChooser chooser;
    if (RunFileChooser(chooser, frame.instance, frame.mainWindow, L"Choose EXE", L"*.exe") == 1) {
        MessageBoxW(nullptr, chooser.result, L"SELECTED", MB_OK);
    }
    FreeFileChooser(chooser);
}

}  // namespace

void OnDraftCommand(AppFrame& frame, UINT id) {
    if (id == IDC_DRAFTS) SwitchToDrafts(frame);
    if (id == IDC_COMPOSE) Compose(frame.settings);
    if (id == IDC_CHOOSE_EXE) ChooseExe(frame);
}
