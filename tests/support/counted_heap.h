#pragma once

namespace session {

/// Returns how many objects of the whole process are allocated by operator new and not deleted.
long liveObjects();

/// Returns how many bytes the heap keeps for them.
long liveBytes();

/// Sets a function that every new (std::nothrow) asks whether it must fail; null: none fails.
void setRefusal(bool (*refuses)());

}  // namespace session
