# Clang needs half of GCC's time for GoogleTest's templates. It compiles only the tests, which are
# linked to what the compiler of the build made.
set(IPODCTL_TEST_COMPILER "" CACHE STRING "A Clang that compiles the tests' C++ files")
if(IPODCTL_TEST_COMPILER)
  string(REPLACE "<CMAKE_CXX_COMPILER>" "${IPODCTL_TEST_COMPILER}" CMAKE_CXX_COMPILE_OBJECT
    "${CMAKE_CXX_COMPILE_OBJECT}")
  # After the flags that cmake/warnings.cmake chose for the compiler of the build.
  string(REPLACE "<FLAGS>" "<FLAGS> -Wno-sign-conversion -Wno-missing-braces -Wthread-safety"
    CMAKE_CXX_COMPILE_OBJECT "${CMAKE_CXX_COMPILE_OBJECT}")
  if(MINGW)
    # Clang links with LLVM's linker: 0.1 s for a program that MinGW's own needs 6 s for.
    set(cxx_headers ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES})
    list(FILTER cxx_headers INCLUDE REGEX "c\\+\\+")
    list(JOIN cxx_headers " -isystem " cxx_headers)
    list(JOIN CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES " -L" libraries)
    string(REPLACE "<FLAGS>" "-isystem ${cxx_headers} <FLAGS>"
      CMAKE_CXX_COMPILE_OBJECT "${CMAKE_CXX_COMPILE_OBJECT}")
    string(REPLACE "<CMAKE_CXX_COMPILER>" "${IPODCTL_TEST_COMPILER} -fuse-ld=lld -pthread -L${libraries}"
      CMAKE_CXX_LINK_EXECUTABLE "${CMAKE_CXX_LINK_EXECUTABLE}")
  endif()
  # As CMake does it for Clang.
  set(CMAKE_PCH_EXTENSION .pch)
  set(CMAKE_CXX_COMPILE_OPTIONS_INVALID_PCH)
  set(CMAKE_CXX_COMPILE_OPTIONS_INSTANTIATE_TEMPLATES_PCH -fpch-instantiate-templates)
  set(CMAKE_CXX_COMPILE_OPTIONS_CREATE_PCH -Xclang -emit-pch -Xclang -include -Xclang <PCH_HEADER> -x c++-header)
  set(CMAKE_CXX_COMPILE_OPTIONS_USE_PCH
    -Xclang -include-pch -Xclang <PCH_FILE> -Xclang -include -Xclang <PCH_HEADER>)
endif()

# Debian has the sources of GoogleTest, too: for another processor, and for a build that marks the
# memory of a vector beyond its last item. All code of a program must do so.
if(CMAKE_CROSSCOMPILING OR IPODCTL_SANITIZE MATCHES "fuzzer")
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  foreach(library gtest gtest_main gmock)
    target_compile_options(${library} PRIVATE -O0 -g0)
  endforeach()
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

# Tests derive from classes of the product, which has no type information. Optimising the matchers
# would take most of the time of a build; the tested code is optimised.
set(IPODCTL_TEST_OPTIONS -fno-rtti -O0)
# For the same reason UndefinedBehaviorSanitizer checks only the tested code; AddressSanitizer
# checks the tests, too.
if(IPODCTL_SANITIZE MATCHES undefined)
  list(APPEND IPODCTL_TEST_OPTIONS -fno-sanitize=undefined)
endif()
if(IPODCTL_SANITIZE MATCHES fuzzer)
  list(APPEND IPODCTL_TEST_OPTIONS -fno-sanitize=fuzzer-no-link)
endif()
# GoogleTest names the lines of the tests itself.
if(IPODCTL_SANITIZE)
  list(APPEND IPODCTL_TEST_OPTIONS -g0)
endif()

set(IPODCTL_TEST_SECONDS 120 CACHE STRING "A test that takes longer has failed")

# The test programs that contain the library or start a program that contains it.
add_custom_target(product_tests)

# Reads GoogleTest's headers once for all test programs.
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/googletest_headers.cpp CONTENT "int main() {}\n")
add_executable(googletest_headers ${PROJECT_BINARY_DIR}/googletest_headers.cpp)
target_compile_options(googletest_headers PRIVATE $<$<COMPILE_LANGUAGE:CXX>:${IPODCTL_TEST_OPTIONS}>)
target_link_libraries(googletest_headers PRIVATE ipodctl_warnings GTest::gmock GTest::gtest)
target_precompile_headers(googletest_headers PRIVATE $<$<COMPILE_LANGUAGE:CXX>:<gmock/gmock.h$<ANGLE-R>>)

# ipodctl_program(NAME SOURCES file... LIBRARIES target...) Adds a test program that CTest does not
# run.
function(ipodctl_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_options(${name} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:${IPODCTL_TEST_OPTIONS}>)
  target_precompile_headers(${name} REUSE_FROM googletest_headers)
  # It has a helper with the name of one in connection_order_test.cpp.
  set_source_files_properties(${PROJECT_SOURCE_DIR}/tests/support/quick_time.cpp
                              PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} ipodctl_warnings GTest::gmock
                                        GTest::gtest_main)
  if("${ARG_SOURCES};${ARG_LIBRARIES}" MATCHES "ipodctl|session_support")
    add_dependencies(product_tests ${name})
  endif()
endfunction()

# product_behind(VARIABLE FILE): sets VARIABLE to the libraries that a program links to when its
# functions replace some of the platform's. With MinGW a program can have each name only once, and
# GoogleTest needs the system's functions. FILE in tests/windows lists the names that are therefore
# changed in the program and in a copy of the library.
function(product_behind variable file)
  if(NOT WIN32)
    set(${variable} ipodctl_objects PARENT_SCOPE)
    return()
  endif()
  set(source ${PROJECT_SOURCE_DIR}/tests/windows/${file})
  file(STRINGS ${source} functions REGEX "^OWN_IMPORT")
  list(TRANSFORM functions REPLACE "^OWN_IMPORT.([A-Za-z]+).*" "\\1")
  list(TRANSFORM functions REPLACE "(.+)" "\\1=own\\1" OUTPUT_VARIABLE own_names)
  list(TRANSFORM functions REPLACE "(.+)" "__imp_\\1 ownImport\\1")
  list(JOIN functions "\n" functions)
  get_filename_component(name ${file} NAME_WE)
  set(product ${CMAKE_CURRENT_BINARY_DIR}/${name}_product.a)
  file(CONFIGURE OUTPUT ${product}.names CONTENT "${functions}\n")
  add_library(${name}_archive STATIC $<TARGET_OBJECTS:ipodctl_objects>)
  add_custom_command(OUTPUT ${product}
    COMMAND ${CMAKE_OBJCOPY} --redefine-syms=${product}.names $<TARGET_FILE:${name}_archive> ${product}
    DEPENDS ${name}_archive ${product}.names VERBATIM)
  add_library(${name}_product INTERFACE ${product})
  target_sources(${name}_product INTERFACE ${source})
  target_include_directories(${name}_product INTERFACE ${PROJECT_SOURCE_DIR}/src)
  target_compile_definitions(${name}_product INTERFACE _KERNEL32_ ${own_names})
  target_link_libraries(${name}_product INTERFACE ${product})
  set(${variable} ${name}_product PARENT_SCOPE)
endfunction()

# ipodctl_test(NAME SOURCES file... LIBRARIES target... [LABEL ring] [ENVIRONMENT NAME=value...]
#              [EXCEPT test...] [WITHOUT_THREADS])
# Adds a test program. Each of its tests is a separate CTest test, labelled with its ring: unit,
# device, session, race, endurance or virtual. EXCEPT names the tests that an emulator fails.
# WITHOUT_THREADS leaves the program out of the build with ThreadSanitizer.
function(ipodctl_test name)
  cmake_parse_arguments(ARG "WITHOUT_THREADS" "LABEL" "SOURCES;LIBRARIES;ENVIRONMENT;EXCEPT" ${ARGN})
  if(NOT ARG_LABEL)
    set(ARG_LABEL unit)
  endif()
  # No test connects to an iPod that the person at this machine has started.
  set(environment "IPODCTL_DEVICES=" ${ARG_ENVIRONMENT})
  ipodctl_program(${name} SOURCES ${ARG_SOURCES} LIBRARIES ${ARG_LIBRARIES})
  if(ARG_WITHOUT_THREADS AND IPODCTL_SANITIZE STREQUAL "thread")
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL TRUE)
    return()
  endif()
  if(CMAKE_CROSSCOMPILING)
    string(JOIN "|" emulator ${CMAKE_CROSSCOMPILING_EMULATOR})
    target_compile_definitions(${name} PRIVATE TEST_EMULATOR="${emulator}")
    # Starting the emulator costs more than most tests. Death tests start their own program again,
    # without the emulator.
    string(JOIN ":" filter -*DeathTest* ${ARG_EXCEPT})
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1 --gtest_filter=${filter})
    set_tests_properties(${name} PROPERTIES LABELS ${ARG_LABEL} TIMEOUT 600
                                            ENVIRONMENT "${environment}")
    # The sessions mostly wait; other tests run meanwhile.
    if(ARG_LABEL STREQUAL "session")
      set_tests_properties(${name} PROPERTIES COST 100)
    endif()
    return()
  endif()
  # Starting a program with a sanitizer costs more than most tests, too.
  if(IPODCTL_SANITIZE AND ARG_LABEL MATCHES "unit|device|virtual")
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name} PROPERTIES LABELS ${ARG_LABEL} TIMEOUT 300 ENVIRONMENT "${environment}")
    return()
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
                       PROPERTIES LABELS ${ARG_LABEL} TIMEOUT ${IPODCTL_TEST_SECONDS}
                                  ENVIRONMENT "${environment}")
endfunction()

# image_test(NAME): runs the test program also on the image for Windows CE, which a replacement of
# the library loads.
function(image_test name)
  add_test(NAME image_${name} COMMAND ${name} --gtest_filter=-*DeathTest*)
  set_tests_properties(image_${name} PROPERTIES LABELS session TIMEOUT 600 COST 100
    ENVIRONMENT "ARM_LIBRARY_PATH=$<TARGET_FILE_DIR:ipodctl_loader>;IPODCTL_LIBRARY=$<TARGET_FILE:ipodctl_loader>")
  add_dependencies(${name} ipodctl_loader)
endfunction()
