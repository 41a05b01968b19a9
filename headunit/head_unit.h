#pragma once

#include <string>

#include "conversation.h"
#include "screen.h"

/// What every section of a session works with.
struct HeadUnit {
  Conversation ipod;
  Screen screen;
  bool hasGaps = false;  ///< the iPod left something unanswered or undone

  /// Shows what the iPod left unanswered or undone. That it is lost is shown once, at the end.
  void showGap(const std::string& text);
};
