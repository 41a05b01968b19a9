// What the rules of `iaptrace check` find.
#pragma once

#include <string>
#include <vector>

#include "iaptrace/check_session.h"

namespace iaptrace::checking {

/// A fault. Findings of the same cause are one finding with the lines of all.
struct Finding {
  std::string cause;   ///< an id of check_causes.h
  std::string detail;  ///< a sentence about this trace; empty: none
  std::vector<size_t> lines;
};

/// Something worth knowing that is not a fault.
struct Note {
  std::string text;
  std::vector<size_t> lines;
};

struct Diagnosis {
  std::vector<Finding> findings;
  std::vector<Note> notes;
  size_t connections = 0;  ///< in which the iPod entered the Extended Interface mode

  void add(const std::string& cause, const std::vector<size_t>& lines,
           const std::string& detail = {});
  void addNote(const std::string& text, const std::vector<size_t>& lines);
  /// Sorts the lines of each finding and note, each line once.
  void tidyLines();
};

}  // namespace iaptrace::checking
