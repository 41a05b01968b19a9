#pragma once

#include <string>

/// While a LastWords lives, a program that an alarm, a crash or a sanitizer's report ends prints
/// these words. Tests that make many tries in one program name the current one. One at a time.
class LastWords {
 public:
  explicit LastWords(const std::string& words);
  ~LastWords();
  LastWords(const LastWords&) = delete;
  LastWords& operator=(const LastWords&) = delete;
};
