#pragma once

#include <gtest/gtest.h>

#include <string>

#include "base/debug_print.h"

/// Returns what `action` prints while the debug flag is `flag`.
template <class Action>
std::string printed(uint8_t flag, const Action& action) {
  const uint8_t before = ipodctl::debugFlag.exchange(flag);
  testing::internal::CaptureStdout();
  action();
  ipodctl::debugFlag = before;
  return testing::internal::GetCapturedStdout();
}

template <class Action>
std::string printedInDebug(const Action& action) {
  return printed(1, action);
}

template <class Action>
std::string printedQuietly(const Action& action) {
  return printed(0, action);
}
