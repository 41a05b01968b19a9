#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// Ends the program unless `holds`; the fuzzer reports that as a finding.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "==== wrong: %s\n", what);
  std::abort();
}

inline void require(bool holds, const std::string& what) { require(holds, what.c_str()); }
