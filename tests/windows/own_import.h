#pragma once

/// Gives the program's own function of the platform to the product, which calls it through a
/// pointer of this name.
#define OWN_IMPORT(function)                          \
  extern "C" {                                        \
  extern decltype(&function) ownImport##function;     \
  decltype(&function) ownImport##function = function; \
  }                                                   \
  static_assert(true, "takes the semicolon")
