#include "platform/platform.h"

INT_PTR RunDialog(HINSTANCE instance, int id, HWND owner, DLGPROC procedure, void* parameter) {
    HRSRC resource = FindResourceW(instance, MAKEINTRESOURCEW(id), MAKEINTRESOURCEW(5));  // RT_DIALOG
    HGLOBAL loaded = resource ? LoadResource(instance, resource) : nullptr;
    if (!loaded) return -1;
    // A loaded resource's handle is its address; the device has no LockResource.
    auto dialogTemplate = static_cast<LPCDLGTEMPLATEW>(loaded);
    return DialogBoxIndirectParamW(instance, dialogTemplate, owner, procedure,
                                   reinterpret_cast<LPARAM>(parameter));
}

UINT TextCodePage() {
    constexpr UINT kShiftJis = 932;
    return IsValidCodePage(kShiftJis) ? kShiftJis : CP_ACP;
}
