# Instruments everything in the build, so that an error in one library is found in every program.
if(IPODCTL_SANITIZE)
  add_compile_options(-fsanitize=${IPODCTL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  # The library and the tests have no type information, which this check needs.
  add_compile_options(-fno-sanitize=vptr)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # GCC defines these, and Clang does not.
    if(IPODCTL_SANITIZE MATCHES "address")
      add_compile_definitions(__SANITIZE_ADDRESS__)
    elseif(IPODCTL_SANITIZE STREQUAL "thread")
      add_compile_definitions(__SANITIZE_THREAD__)
      # C++ programs would get its operator new in addition to those of the tests.
      string(REPLACE "<CMAKE_CXX_COMPILER>" "<CMAKE_C_COMPILER>" CMAKE_CXX_LINK_EXECUTABLE
        "${CMAKE_CXX_LINK_EXECUTABLE}")
      set(CMAKE_CXX_STANDARD_LIBRARIES "-lstdc++ -lm")
    endif()
    # A program in C that loads the library must link the sanitizer's runtime for C++.
    if(IPODCTL_SANITIZE MATCHES "undefined")
      add_link_options("$<$<LINK_LANGUAGE:C>:-fsanitize-link-c++-runtime;-lstdc++>")
    endif()
  endif()
  # The check of the stack's depth does not work with fibers. Code must not use the memory of a
  # vector beyond its last item.
  if(IPODCTL_SANITIZE MATCHES "fuzzer")
    add_compile_definitions(_GLIBCXX_SANITIZE_VECTOR)
    add_compile_options(-fno-sanitize-coverage=stack-depth)
  endif()
  add_link_options(-fsanitize=${IPODCTL_SANITIZE})
endif()
