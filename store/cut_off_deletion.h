// The files that a deletion of read articles writes beside a group's, and what a start makes of those that
// one left which was cut off.
#pragma once

#include "store/group_store.h"

// One listing of the folder for what deletions of read articles leave when they are cut off ("id~", "lo~").
// True also when that cannot be known: each group has then to be looked at.
bool MayHoldCutOffDeletion(const wchar_t* folder);

// For start-up, before it opens the index, where the data folder holds such files (MayHoldCutOffDeletion).
// While the old index names articles of the log it stands, and the new files are removed. Otherwise the new
// ones take their places; where the new index is lost or damaged, both indexes go, so that start-up makes one
// from the log. False when a file cannot be read, renamed or removed now: whoever went on would write beside
// the articles.
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
