#include "shell/not_yet.h"

#include "resources/resource.h"
#include "text/messages.h"

void ShowNotYet(const wchar_t* what) {
    MessageBoxW(nullptr, FormatText(LoadResString(IDS_NOT_YET), what), kProgramCaption,
                MB_OK | MB_ICONEXCLAMATION);
}
