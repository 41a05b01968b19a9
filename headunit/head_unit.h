#pragma once

#include <string>

#include "conversation.h"
#include "screen.h"

/// The objects that every section of a session uses.
struct HeadUnit {
  Conversation ipod;
  Screen screen;
  bool hasGaps = false;  ///< the iPod left something unanswered or undone

  /// Shows what the iPod left unanswered or undone. A lost iPod is shown once, at the end.
  void showGap(const std::string& text);
};
