// Deletes the read articles of one group by rewriting its log and index.
#pragma once

#include "store/group_store.h"

// Writes the unread articles into a new index ("id~" in the place of "idx") and a new log ("lo~"), then puts
// the log in the old one's place and after it the index. A failure before that leaves the old files as they
// were; one behind it leaves the group without an index until the next start finishes it, and nobody uses it
// meanwhile. Error 80, and nothing is touched, where new files wait for that.
[[nodiscard]] bool DeleteRead(GroupStore& store);

// For start-up, before it opens the index, where the data folder holds such files (MayHoldCutOffDeletion).
// While the old index names articles of the log it stands, and the new files are removed. Otherwise the new
// ones take their places; where the new index is lost or damaged, both indexes go, so that start-up makes one
// from the log. False when a file cannot be read, renamed or removed now: whoever went on would write beside
// the articles.
[[nodiscard]] bool FinishDeletion(const GroupStore& store);
