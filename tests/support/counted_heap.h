#pragma once

namespace session {

/// How many objects of the whole process are allocated by operator new and not deleted.
long liveObjects();

/// How many bytes the heap keeps for them.
long liveBytes();

/// Has every new (std::nothrow) asked whether it is to fail; null: none is.
void setRefusal(bool (*refuses)());

}  // namespace session
