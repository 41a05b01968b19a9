# The man pages: section 3 of the public header, section 1 of what the programs print about
# themselves.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
set(IPODCTL_DATE 2026-11-23 CACHE STRING "The date in the man pages")
set(programs ipodsim headunit iaptrace ipodctl_program)
list(TRANSFORM programs REPLACE "(.+)" "$<TARGET_FILE:\\1>" OUTPUT_VARIABLE program_files)
set(generator ${PROJECT_SOURCE_DIR}/scripts/parts/make_man.py)
set(header ${PROJECT_SOURCE_DIR}/src/api/ipodctl.h)
add_custom_command(
  OUTPUT ${PROJECT_BINARY_DIR}/man/man3/ipodctl.3
  COMMAND Python3::Interpreter -B ${generator} --header ${header} --date ${IPODCTL_DATE}
          --to ${PROJECT_BINARY_DIR}/man ${program_files}
  DEPENDS ${generator} ${header} ${programs}
  COMMENT "Writing the man pages" VERBATIM)
add_custom_target(man_pages ALL DEPENDS ${PROJECT_BINARY_DIR}/man/man3/ipodctl.3)
install(DIRECTORY ${PROJECT_BINARY_DIR}/man/man3 DESTINATION ${CMAKE_INSTALL_MANDIR}
        COMPONENT development)
install(DIRECTORY ${PROJECT_BINARY_DIR}/man/man1 DESTINATION ${CMAKE_INSTALL_MANDIR}
        COMPONENT tools)
