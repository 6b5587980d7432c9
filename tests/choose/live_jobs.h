// Watches the memory of the group-list jobs, in the place of the program's own allocation functions.
#pragma once

#include <atomic>

// Jobs that have been made and not freed. A freed one is overwritten, so a worker that still used it would
// stumble.
extern std::atomic<int> liveJobs;

// Memory runs out when the next job is made.
extern std::atomic<bool> noJobs;
