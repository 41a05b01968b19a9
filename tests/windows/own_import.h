#pragma once

/// Makes the library call the program's replacement of a platform function, through a pointer of
/// this name.
#define OWN_IMPORT(function)                          \
  extern "C" {                                        \
  extern decltype(&function) ownImport##function;     \
  decltype(&function) ownImport##function = function; \
  }                                                   \
  static_assert(true, "needs a semicolon")
