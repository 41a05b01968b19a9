#pragma once

/// Plays the group before or after the one that the up-down snapshot was taken in: within a list of
/// all tracks the artist or album whose tracks come next, below a list its next record. False when
/// there is no other group. Callers hold the library lock.
bool stepToGroup(bool forward);
