#pragma once

/// Waits. It is a file of its own so that a test can put another clock in its place.
void waitMilliseconds(int milliseconds);
