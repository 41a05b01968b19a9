# Installs the library for other people's programs. The folder of public headers gets ipodctl.h
# alone; what only the Linux host has is in separate folders.
include(CMakePackageConfigHelpers)

set(platform_libraries ${CMAKE_INSTALL_LIBDIR}/ipodctl)
set(package_files ${CMAKE_INSTALL_LIBDIR}/cmake/ipodctl)

# ipodctl::linux: the platform's own functions, for programs that use desk.h or isochplay_desk.h.
add_library(ipodctl_linux INTERFACE)
set_target_properties(ipodctl_linux PROPERTIES EXPORT_NAME linux)
target_link_libraries(ipodctl_linux INTERFACE coredll isochplay)
add_library(ipodctl::linux ALIAS ipodctl_linux)

install(TARGETS ipodctl EXPORT ipodctl_targets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
        NAMELINK_COMPONENT development)
set_target_properties(coredll isochplay PROPERTIES INSTALL_RPATH $ORIGIN)
install(TARGETS coredll isochplay EXPORT ipodctl_targets
        LIBRARY DESTINATION ${platform_libraries} COMPONENT runtime)
if(TARGET isochplay_sound)
  set_target_properties(isochplay_sound PROPERTIES INSTALL_RPATH $ORIGIN)
  install(TARGETS isochplay_sound LIBRARY DESTINATION ${platform_libraries} COMPONENT runtime)
endif()
install(TARGETS windows_headers ipodctl_linux EXPORT ipodctl_targets)

install(FILES ${PROJECT_SOURCE_DIR}/src/api/ipodctl.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(FILES ${PROJECT_SOURCE_DIR}/host/include/desk.h
              ${PROJECT_SOURCE_DIR}/host/include/mmsystem.h
              ${PROJECT_SOURCE_DIR}/host/include/windows.h
              ${PROJECT_SOURCE_DIR}/host/isochplay/isochplay.h
              ${PROJECT_SOURCE_DIR}/host/isochplay/isochplay_desk.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ipodctl-linux COMPONENT development)

# find_package(ipodctl)
install(EXPORT ipodctl_targets NAMESPACE ipodctl:: FILE ipodctlTargets.cmake
        DESTINATION ${package_files} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/ipodctlConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/ipodctlConfig.cmake
                              INSTALL_DESTINATION ${package_files}
                              PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ipodctlConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/ipodctlConfig.cmake
              ${PROJECT_BINARY_DIR}/ipodctlConfigVersion.cmake
        DESTINATION ${package_files} COMPONENT development)

# ipodctl_add_ipod_test, also for a project that adds this one as a subdirectory.
include(${CMAKE_CURRENT_LIST_DIR}/ipodctlTest.cmake)
install(FILES ${CMAKE_CURRENT_LIST_DIR}/ipodctlTest.cmake
        DESTINATION ${package_files} COMPONENT development)
install(PROGRAMS ${CMAKE_CURRENT_LIST_DIR}/run-ipod-test
        DESTINATION ${package_files} COMPONENT development)

# pkg-config finds the prefix from the place of its file, so that it can be moved.
file(RELATIVE_PATH prefix_of_package_config
     /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(package ipodctl ipodctl-linux)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${package}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# install_program(TARGET): installs a program that finds the installed libraries.
function(install_program target)
  file(RELATIVE_PATH libraries /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
  set_target_properties(${target} PROPERTIES
    INSTALL_RPATH "$ORIGIN/${libraries};$ORIGIN/${libraries}/ipodctl")
  install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endfunction()
