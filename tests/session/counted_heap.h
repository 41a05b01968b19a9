#pragma once

namespace session {

/// How many objects of the whole process are allocated by operator new and not deleted.
long liveObjects();

}  // namespace session
