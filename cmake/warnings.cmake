# What every target of the project is compiled with: link to ipodctl_warnings.
add_library(ipodctl_warnings INTERFACE)
target_compile_options(ipodctl_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wcast-qual -Wformat=2 -Wundef -Werror
  $<$<CXX_COMPILER_ID:Clang>:-Wno-missing-braces>  # which std::array can do without
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast>
  $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes>)
