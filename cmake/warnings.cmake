# The warnings of every target of the project, which links to ipodctl_warnings.
add_library(ipodctl_warnings INTERFACE)
target_compile_options(ipodctl_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wcast-qual -Wformat=2 -Wundef
  # Another project can have a compiler that warns of more.
  $<$<BOOL:${PROJECT_IS_TOP_LEVEL}>:-Werror>
  # GCC has the first one only in C, and std::array does not need the second one.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion -Wno-missing-braces>
  # Clang checks that what a semaphore guards is used under it. GCC does not know the attributes of
  # src/base/thread_safety.h.
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
  $<$<CXX_COMPILER_ID:GNU>:-Wno-attributes>
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast>
  $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes>)
