#pragma once

#include <string>

/// While one lives, a program that dies - of an alarm, a crash or a sanitizer's report - prints its
/// words. Tests that make many tries in one program say which one it is. One at a time.
class LastWords {
 public:
  explicit LastWords(const std::string& words);
  ~LastWords();
  LastWords(const LastWords&) = delete;
  LastWords& operator=(const LastWords&) = delete;
};
