#include "shell/actions.h"

#include "drafts/file_chooser.h"
#include "resources/resource.h"
#include "text/messages.h"

namespace {

void ShowMissingProperty(UINT textId) {
    wchar_t caption[kTextCapacity];
    const wchar_t* text = LoadResString(IDS_PROPERTIES_MISSING);
    CopyCut(caption, kTextCapacity, text ? text : L"");
    MessageBoxW(nullptr, LoadResString(textId), caption, MB_OK | MB_ICONEXCLAMATION);
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
    if (RunFileChooser(chooser, frame.instance, frame.mainWindow, L"Choose EXE", L"*.exe") == 1) {
        MessageBoxW(nullptr, chooser.result, L"SELECTED", MB_OK);
    }
    FreeFileChooser(chooser);
}
