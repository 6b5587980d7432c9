// Start-up's check of a group's index: its version, and the conversion of versions 1 to 4.
#pragma once

#include "store/group_store.h"

// The version word; 1 for a text header (a word above 500). Error 2 when there is no index, 13 when it is
// shorter than a version word.
[[nodiscard]] bool ProbeVersion(GroupStore& store, uint32_t& version);

enum class IndexState {
    kReady,           // version 5, or made so
    kUnknownVersion,  // neither of the versions 1 to 5; nothing was touched, error 13
    kFailed,
};

// Start-up's check of one group: an older index becomes version 5, a missing one is made from the log.
IndexState BringUpToDate(GroupStore& store);

enum class CutOffUpgrade {
    kNone,    // no new index, or one that was never finished, which is removed
    kTaken,   // it has the index's name now
    kFailed,  // it may be all that is left of the read marks, and cannot be read or renamed now
};

// For an index that is missing: takes over the new one of a conversion that was cut off after the old one had
// gone.
CutOffUpgrade FinishUpgrade(const GroupStore& store);

// Makes a missing index from the log. A log that holds a line which is too long gives the articles before it
// and the failure 234; after any other failure there is still no index.
[[nodiscard]] bool MakeIndex(GroupStore& store);

// Converts an index of version 1 to 4 to version 5. After a failure the old index stands.
[[nodiscard]] bool UpgradeIndex(GroupStore& store, uint32_t version);
