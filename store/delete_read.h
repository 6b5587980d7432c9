// Deletes the read articles of one group by rewriting its log and index.
#pragma once

#include "store/group_store.h"

// Writes the unread articles into a new index ("id~" in the place of "idx") and a new log ("lo~"), then puts
// the log in the old one's place and after it the index. A failure before that leaves the old files as they
// were. Records keep the place of their subject's text as it was in the old log.
[[nodiscard]] bool DeleteRead(GroupStore& store);

// Before the index is opened, at start-up and by everyone who reads a header: finishes a rewrite that was cut
// off while its files took their places, which is so when the old log has gone. Where the new index was
// damaged since, both indexes go, so that start-up makes one from the log. Temporary files of any other
// rewrite that was cut off are removed; the old files stand. False when a file cannot be read, renamed or
// removed now: whoever went on would write beside the articles.
[[nodiscard]] bool FinishDeletion(const GroupStore& store);
