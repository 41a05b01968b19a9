# exported_names(DEF_FILE RESULT): sets RESULT to the names of a module-definition file, in their
# order.
function(exported_names def_file result)
  file(STRINGS ${def_file} names REGEX "@[0-9]+")
  list(TRANSFORM names REPLACE "^ *([A-Za-z0-9_]+) @.*" "\\1")
  set(${result} ${names} PARENT_SCOPE)
endfunction()

# export_definitions(TARGET DEF_FILE): makes the shared library TARGET export only the names of a
# module-definition file, like the DLL made from the same file.
function(export_definitions target def_file)
  exported_names(${def_file} exports)
  set(names "")
  foreach(name IN LISTS exports)
    string(APPEND names "    ${name};\n")
  endforeach()
  set(version_script ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(CONFIGURE OUTPUT ${version_script} CONTENT "{\n  global:\n@names@  local:\n    *;\n};\n" @ONLY)
  target_link_options(${target} PRIVATE LINKER:--version-script=${version_script})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${version_script})
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${def_file})
endfunction()
