// Deletes the read articles of one group by rewriting its log and index.
#pragma once

#include "store/group_store.h"

// Writes the unread articles into a new index ("id~" in the place of "idx") and a new log ("lo~"), then puts
// the log in the old one's place and after it the index. A failure before that leaves the old files as they
// were; one behind it leaves the group without an index until the next start finishes it, and nobody uses it
// meanwhile. Error 80, and nothing is touched, where new files wait for that.
[[nodiscard]] bool DeleteRead(GroupStore& store);
