#include "shell/commands.h"

#include "drafts/file_chooser.h"
#include "resources/resource.h"
#include "text/messages.h"

namespace {

void ShowMissingProperty(UINT textId) {
    TextBuffer caption;
    MessageBoxW(nullptr, LoadResString(textId), LoadResStringOrEmpty(IDS_PROPERTIES_MISSING, caption),
                MB_OK | MB_ICONEXCLAMATION);
}

}  // namespace

void Compose(AppFrame& frame) {
    if (!frame.settings.UserName) {
        ShowMissingProperty(IDS_SET_USER_NAME);
    } else if (!frame.settings.MailAddress) {
        ShowMissingProperty(IDS_SET_MAIL_ADDRESS);
    } else {
        MessageBoxW(nullptr, L"Compoe!", L"COMPOSE", MB_OK);
    }
}

void ChooseExe(AppFrame& frame) {
    FileChooser chooser;
    if (RunFileChooser(chooser, frame.instance, frame.mainWindow, L"Choose EXE", L"*.exe") == IDOK) {
        MessageBoxW(nullptr, chooser.result, L"SELECTED", MB_OK);
    }
    FreeFileChooser(chooser);
}
