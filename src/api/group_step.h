#pragma once

namespace ipodctl {

/// Plays the group before or after the one that the up-down snapshot was taken in: in a snapshot of
/// level 1 the artist or album whose tracks come next in the playing list, below it the next record
/// of the list of level 1. Returns false when nothing was played. Callers hold the library lock.
bool stepToGroup(bool forward);

}  // namespace ipodctl
