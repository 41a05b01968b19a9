#pragma once

/// How a session ended; the numbers are exit statuses.
enum class Ending {
  kWhole = 0,    ///< everything was shown
  kNoIpod = 1,   ///< none could be connected, or it was lost on the way
  kWithGaps = 3  ///< the iPod left something unanswered or undone
};

/// Runs one whole session with the iPod and prints it section by section.
Ending runSession();
