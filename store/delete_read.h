// Deletes the read articles of one group by rewriting its log and index.
#pragma once

#include "store/group_store.h"

// Writes the unread articles into a new index ("id~" in the place of "idx") and a new log ("lo~"), then puts
// the log in the old one's place and after it the index. A failure before that leaves the old files as they
// were. Records keep the place of their subject's text as it was in the old log.
[[nodiscard]] bool DeleteRead(GroupStore& store);

// For start-up, before the index is opened: finishes a rewrite that was cut off while its files took their
// places, which is so when the new index is whole and only the new log is left. Temporary files of any other
// rewrite that was cut off are removed; the old files stand. Files that cannot be read now are left as they
// are.
void FinishDeletion(const GroupStore& store);
