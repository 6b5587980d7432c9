// The small modal dialog that counts the groups while the server's list is fetched.
#pragma once

#include "subscribe/group_list.h"

// Fetches the list, shows what went wrong, and returns when the dialog closes. Esc closes it early; the
// worker then ends on its own. Always returns 0.
INT_PTR RunGroupListDownload(HINSTANCE instance, HWND parent, const GroupListRequest& request);
