// Tells the user that a command's work is still to be written.
#pragma once

void ShowNotYet(const wchar_t* what);
