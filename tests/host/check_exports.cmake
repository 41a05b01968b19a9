# Fails unless LIBRARY exports exactly the functions that HEADERS (separated by commas) declare, apart
# from DllMain, which modules define. NM is the program that lists symbols.
string(REPLACE "," ";" HEADERS "${HEADERS}")
set(declared "")
foreach(header IN LISTS HEADERS)
  file(READ ${header} text)
  string(REGEX REPLACE "/\\*[^*]*\\*+([^/*][^*]*\\*+)*/" "" text "${text}")
  string(REGEX MATCHALL "[^\n]+ (WINAPI |)[A-Za-z]+\\(" starts "${text}")
  foreach(start IN LISTS starts)
    if(NOT start MATCHES "^(typedef|#|  )" AND start MATCHES "([A-Za-z]+)\\($")
      list(APPEND declared ${CMAKE_MATCH_1})
    endif()
  endforeach()
endforeach()
list(REMOVE_ITEM declared DllMain)
list(SORT declared)

execute_process(COMMAND ${NM} -D --defined-only --format=posix ${LIBRARY}
                OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
list(TRANSFORM lines REPLACE " .*" "")
list(SORT lines)

list(LENGTH declared count)
if(count EQUAL 0 OR NOT declared STREQUAL lines)
  message(FATAL_ERROR "${LIBRARY}\n  exports:  ${lines}\n  declared: ${declared}")
endif()
message(STATUS "${count} functions declared and exported")
