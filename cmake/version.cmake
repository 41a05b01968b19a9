# The library prints its version, so its source is where the version is kept: "01.29" is 1.29.
set(version_source ${CMAKE_CURRENT_LIST_DIR}/../src/api/connection.cpp)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${version_source})
file(STRINGS ${version_source} version_line REGEX "kVersion\\[\\] = \"[0-9]+\\.[0-9]+\"")
if(NOT version_line MATCHES "\"0*([0-9]+\\.[0-9]+)\"")
  message(FATAL_ERROR "src/api/connection.cpp has no kVersion such as \"01.29\"")
endif()
set(IPODCTL_VERSION ${CMAKE_MATCH_1})
