// The files that a deletion of read articles writes beside a group's, and how start-up finishes or clears
// a deletion that was cut off.
#pragma once

#include "store/group_store.h"

// Whether the folder holds what a deletion leaves when it is cut off ("id~", "lo~"), by one listing. Also
// true when that cannot be known: then every group has to be checked.
bool MayHoldCutOffDeletion(const wchar_t* folder);

// For start-up, before it opens the index, where the data folder holds such files (MayHoldCutOffDeletion).
// While the old index names articles of the log it stands, and the new files are removed. Otherwise the new
// ones take their places; where the new index is lost or damaged, both indexes go, so that start-up makes one
// from the log. False when a file cannot be read, renamed or removed now: going on would write beside the
// articles.
[[nodiscard]] bool FinishDeletion(const GroupStore& store);

// For the deletion itself. The names end in "id~" in the place of "idx", and "lo~".
struct TemporaryPaths {
    WideText index;
    WideText log;
};

// Error 87 without names, 8.
[[nodiscard]] bool MakePaths(const GroupStore& store, TemporaryPaths& paths);

// What cannot be removed stays. The last error stays, too.
void RemoveTemporaries(const TemporaryPaths& paths);

// The old log has gone. The new one takes its place, where it has not yet, and then the new index the old
// one's.
[[nodiscard]] bool TakePlaces(const TemporaryPaths& paths, const GroupStore& store, bool newLogWaits);
