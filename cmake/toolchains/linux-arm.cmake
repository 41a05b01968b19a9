# ARM Linux, 32 bits and without a floating-point unit, like the device's processor; its programs
# run under an emulator. scripts/parts/armel-sysroot gets the libraries of the Linux host's
# programs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
# Clang needs two thirds of GCC's time, and uses GCC's libraries.
set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_C_COMPILER_TARGET arm-linux-gnueabi)
set(CMAKE_CXX_COMPILER_TARGET arm-linux-gnueabi)
set(CMAKE_ASM_COMPILER_TARGET arm-linux-gnueabi)
# A library has the atomic operations of this processor.
set(CMAKE_CXX_FLAGS_INIT -Wno-atomic-alignment)
set(CMAKE_C_STANDARD_LIBRARIES_INIT -latomic)
set(CMAKE_CXX_STANDARD_LIBRARIES_INIT -latomic)

get_filename_component(IPODCTL_SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../../build/armel-sysroot" ABSOLUTE)
set(CMAKE_FIND_ROOT_PATH ${IPODCTL_SYSROOT} /usr/arm-linux-gnueabi)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(IPODCTL_LINKER_FLAGS "-Wl,--enable-new-dtags")
foreach(folder lib usr/lib)
  # Quoted, because a folder above the clone can have a space in its name.
  string(APPEND IPODCTL_LINKER_FLAGS
    " \"-Wl,-rpath-link,${IPODCTL_SYSROOT}/${folder}/arm-linux-gnueabi\"")
endforeach()
set(CMAKE_EXE_LINKER_FLAGS_INIT "${IPODCTL_LINKER_FLAGS}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${IPODCTL_LINKER_FLAGS}")

get_filename_component(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../../scripts/parts/run-arm" ABSOLUTE)
