find_package(GTest REQUIRED)
include(GoogleTest)

# ipodctl_test(NAME SOURCES file... LIBRARIES target... [LABEL ring] [ENVIRONMENT NAME=value...])
# One test program. Each of its tests is a CTest test of its own, labelled with its ring: unit,
# device or session.
function(ipodctl_test name)
  cmake_parse_arguments(ARG "" "LABEL" "SOURCES;LIBRARIES;ENVIRONMENT" ${ARGN})
  if(NOT ARG_LABEL)
    set(ARG_LABEL unit)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} ipodctl_warnings GTest::gmock
                                        GTest::gtest_main)
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
                       PROPERTIES LABELS ${ARG_LABEL} TIMEOUT 120 ENVIRONMENT "${ARG_ENVIRONMENT}")
endfunction()
