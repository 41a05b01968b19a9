#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// Ends the program, which the fuzzer takes for a finding, unless `holds`.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "==== wrong: %s\n", what);
  std::abort();
}

inline void require(bool holds, const std::string& what) { require(holds, what.c_str()); }
