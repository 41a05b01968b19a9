#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

/// Ends the program unless `holds`; the fuzzer reports that as a finding.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "==== wrong: %s\n", what);
  std::abort();
}

/// Does the same with the text that `what` returns. It is called only for a finding.
template <typename What, typename = decltype(std::string(std::declval<What>()()))>
void require(bool holds, const What& what) {
  if (!holds) require(false, std::string(what()).c_str());
}

inline void require(bool holds, const std::string& what) { require(holds, what.c_str()); }
