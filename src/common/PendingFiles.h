#ifndef GENETRAIN_COMMON_PENDINGFILES_H
#define GENETRAIN_COMMON_PENDINGFILES_H

#include <string>

namespace genetrain {

// Temporary output files that are not yet in place. Their owners remove them when a run fails;
// these notes remove them when the process is ended by SIGINT, SIGTERM, SIGHUP or SIGPIPE,
// whose default action then follows. A process killed outright (SIGKILL) leaves them; their
// names start with a dot and end in ".tmp".

// Takes note of the file; returns the slot to release, or -1 when every slot is taken (the file
// is then only removed by its owner).
int HoldPending(const std::string& path);
// The file was renamed into place or removed by its owner.
void ReleasePending(int slot);

}  // namespace genetrain

#endif
