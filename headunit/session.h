#pragma once

/// Runs one whole session with the iPod and prints it step by step. False when there is no iPod or
/// it was lost on the way.
bool runSession();
