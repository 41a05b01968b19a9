# windows_dll(TARGET DEF_FILE): makes the shared library TARGET export only the names of a
# module-definition file, undecorated. The import library has the names that a caller's compiler
# uses: with 32 bits the platform's calling convention decorates them. It is made from the DLL's
# symbols, which are then stripped. Microsoft's linker gets a separate one, TARGET.lib.
find_program(IPODCTL_LLVM_DLLTOOL NAMES llvm-dlltool-14 llvm-dlltool REQUIRED)
if(CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(IPODCTL_LLVM_MACHINE i386:x86-64)
else()
  set(IPODCTL_LLVM_MACHINE i386)
endif()
function(windows_dll target def_file)
  set_target_properties(${target} PROPERTIES
    PREFIX "" IMPORT_PREFIX lib LINK_DEPENDS ${def_file}
    ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
  target_link_options(${target} PRIVATE ${def_file} LINKER:--enable-stdcall-fixup)
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${IPODCTL_PYTHON} -B ${PROJECT_SOURCE_DIR}/scripts/parts/make-import-library --nm ${CMAKE_NM}
            --dlltool ${CMAKE_DLLTOOL} --llvm-dlltool ${IPODCTL_LLVM_DLLTOOL}
            --machine ${IPODCTL_LLVM_MACHINE} $<TARGET_FILE:${target}> ${def_file}
            $<TARGET_LINKER_FILE:${target}> ${PROJECT_BINARY_DIR}/bin/${target}.lib
    # The program writes the time of this variable into the DLL, else the current time.
    COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=946684800 ${CMAKE_STRIP} $<TARGET_FILE:${target}>
    VERBATIM)
endfunction()
