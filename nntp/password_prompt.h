// Asks for the password of a user whose password is not stored. Runs on the user-interface thread.
#pragma once

#include "platform/platform.h"
#include "text/owned.h"

// Shows the prompt modally. Returns the dialog's result (IDOK, IDCANCEL); after IDOK `password` holds what
// was entered, or null when memory ran out.
INT_PTR RunPasswordPrompt(HINSTANCE instance, HWND owner, const char* user, Secret& password);
