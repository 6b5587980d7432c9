// The small modal dialog that counts the groups while the server's list is fetched.
#pragma once

#include "subscribe/group_list.h"

// Fetches the list and returns when the dialog closes; what went wrong is told to the user. Esc closes it
// early, and the worker ends on its own. Always answers 0.
INT_PTR RunGroupListDownload(HINSTANCE instance, HWND parent, const GroupListRequest& request);
