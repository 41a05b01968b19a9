#pragma once

#include <string>

/// Prints what a head unit's screen shows. Lines that start in the first column are the library's
/// messages. What the head unit shows is indented.
class Screen {
 public:
  void beginSection(const std::string& title);
  void show(const std::string& text) const;

 private:
  int sections = 0;
};
