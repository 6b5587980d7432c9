#include "platform/platform.h"

namespace {

// A loaded resource's handle is its address; the device has no LockResource.
LPCDLGTEMPLATEW LoadTemplate(HINSTANCE instance, int id) {
    const HRSRC resource = FindResourceW(instance, MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(5));  // RT_DIALOG
    return resource ? static_cast<LPCDLGTEMPLATEW>(LoadResource(instance, resource)) : nullptr;
}

}  // namespace

INT_PTR RunDialog(HINSTANCE instance, int id, HWND owner, DLGPROC procedure, void* parameter) {
    const LPCDLGTEMPLATEW dialogTemplate = LoadTemplate(instance, id);
    if (!dialogTemplate) return -1;
    return DialogBoxIndirectParamW(instance, dialogTemplate, owner, procedure,
                                   reinterpret_cast<LPARAM>(parameter));
}

HWND CreateModelessDialog(HINSTANCE instance, int id, HWND owner, DLGPROC procedure, void* parameter) {
    const LPCDLGTEMPLATEW dialogTemplate = LoadTemplate(instance, id);
    if (!dialogTemplate) return nullptr;
    return CreateDialogIndirectParamW(instance, dialogTemplate, owner, procedure,
                                      reinterpret_cast<LPARAM>(parameter));
}

UINT TextCodePage() {
    constexpr UINT kShiftJis = 932;
    return IsValidCodePage(kShiftJis) ? kShiftJis : CP_ACP;
}
