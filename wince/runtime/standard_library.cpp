// What strings and functions of the C++ library call when they fail. There are no exceptions, so
// the program ends.
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "runtime/program.h"

namespace {

constexpr int kFailed = 1;

[[noreturn]] void fail(const char* why) {
  std::printf("The program ends: %s. Close other programs, then start it again.\n", why);
  endProgram(kFailed);
}

}  // namespace

namespace std {

void __throw_length_error(const char*) { fail("a text is too long"); }
void __throw_logic_error(const char*) { fail("a text is missing"); }
void __throw_out_of_range_fmt(const char*, ...) { fail("a text is too short"); }
void __throw_bad_alloc() { fail("there is no memory"); }
void __throw_bad_function_call() { fail("a function is missing"); }

template class basic_string<char>;

}  // namespace std

/// Strings search a character with it.
extern "C" void* memchr(const void* memory, int wanted, size_t size) {
  const auto* const bytes = static_cast<const unsigned char*>(memory);
  for (size_t i = 0; i < size; ++i) {
    if (bytes[i] == static_cast<unsigned char>(wanted))
      return const_cast<unsigned char*>(bytes + i);
  }
  return nullptr;
}

void* operator new(size_t size) {
  void* const memory = operator new(size, std::nothrow);
  if (memory == nullptr) fail("there is no memory");
  return memory;
}
