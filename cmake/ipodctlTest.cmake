# Tests of head units with a simulated iPod.
#
# ipodctl_add_ipod_test(NAME name COMMAND command [argument...]
#                       [PERSONALITY model] [SETTINGS name=value...] [FAULTS fault...]
#                       [LIBRARY file.json] [TRACKS number] [TIMEOUT seconds])
#
# Adds a test for ctest: the command, while a simulated iPod runs. IPODCTL_DEVICES leads the library
# to it, and IPODCTL_CONTROL is the path of its control socket (ipodsim --help-control). The command
# has 30 seconds unless TIMEOUT is given. It can be a target of the project.
#
# Quote a fault with a # in it.
#
# ipodsim is the one of IPODCTL_IPODSIM, else the one that was built or installed with the package,
# else one of the system.

function(ipodctl_find_ipodsim result)
  if(NOT IPODCTL_IPODSIM AND TARGET ipodsim)
    set(${result} $<TARGET_FILE:ipodsim> PARENT_SCOPE)
    return()
  endif()
  find_program(IPODCTL_IPODSIM ipodsim HINTS ${ipodctl_PROGRAMS} DOC "The simulated iPod of the tests")
  if(NOT EXISTS "${IPODCTL_IPODSIM}")
    message(FATAL_ERROR "ipodctl_add_ipod_test: ipodsim is not installed. Install the programs of "
                        "ipodctl, or set IPODCTL_IPODSIM to its path.")
  endif()
  set(${result} ${IPODCTL_IPODSIM} PARENT_SCOPE)
endfunction()

function(ipodctl_add_ipod_test)
  cmake_parse_arguments(PARSE_ARGV 0 test "" "NAME;PERSONALITY;LIBRARY;TRACKS;TIMEOUT"
                        "COMMAND;SETTINGS;FAULTS")
  if(NOT test_NAME OR NOT test_COMMAND OR test_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "ipodctl_add_ipod_test needs NAME and COMMAND, and does not know: "
                        "${test_UNPARSED_ARGUMENTS}.")
  endif()
  if(NOT test_TIMEOUT)
    set(test_TIMEOUT 30)
  endif()
  set(options "")
  foreach(option PERSONALITY TRACKS)
    if(DEFINED test_${option})
      string(TOLOWER ${option} name)
      list(APPEND options --${name} ${test_${option}})
    endif()
  endforeach()
  if(test_LIBRARY)
    get_filename_component(library ${test_LIBRARY} ABSOLUTE)
    list(APPEND options --library ${library})
  endif()
  foreach(setting IN LISTS test_SETTINGS)
    list(APPEND options --set ${setting})
  endforeach()
  foreach(fault IN LISTS test_FAULTS)
    list(APPEND options --fault ${fault})
  endforeach()
  ipodctl_find_ipodsim(ipodsim)
  list(POP_FRONT test_COMMAND command)
  if(TARGET ${command})
    set(command $<TARGET_FILE:${command}>)
  endif()
  add_test(NAME ${test_NAME} COMMAND ${CMAKE_CURRENT_FUNCTION_LIST_DIR}/run-ipod-test ${ipodsim}
           ${test_TIMEOUT} ${options} -- ${command} ${test_COMMAND})
  # The runner ends the command, and says so.
  math(EXPR limit "${test_TIMEOUT} + 60")
  set_tests_properties(${test_NAME} PROPERTIES TIMEOUT ${limit})
endfunction()
