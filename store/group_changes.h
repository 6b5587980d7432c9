// What goes over all articles of a group. All functions answer false with the reason in the last-error value.
#pragma once

#include "store/group_store.h"

// Makes all records anew from the log, and writes the header. A log that ends inside an article is complete
// up to the article before it.
[[nodiscard]] bool RebuildFromLog(GroupStore& store);

// Gives every record the priority that the group's filter says now. After a failure the header still counts
// what the records say.
[[nodiscard]] bool Refilter(GroupStore& store);

// Sets the read bit of every record (catch-up of the stored articles). After a failure the header still
// counts what the records say.
[[nodiscard]] bool MarkAllRead(GroupStore& store);
