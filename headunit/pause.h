#pragma once

/// Waits. It has a separate file so that a test can replace the clock.
void waitMilliseconds(int milliseconds);
