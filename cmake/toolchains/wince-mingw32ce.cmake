# Windows CE 5 on ARM with the open cross compiler arm-mingw32ce, if you have one. It has the
# platform's headers and import libraries, and writes the image itself.
#   cmake -G Ninja -B build/wince-mingw32ce --toolchain cmake/toolchains/wince-mingw32ce.cmake
set(CMAKE_SYSTEM_NAME WindowsCE)
set(CMAKE_SYSTEM_VERSION 5.0)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(IPODCTL_CE_COMPILER arm-mingw32ce CACHE STRING "Prefix of the cross compiler's programs")
set(CMAKE_C_COMPILER ${IPODCTL_CE_COMPILER}-gcc)
set(CMAKE_CXX_COMPILER ${IPODCTL_CE_COMPILER}-g++)
set(CMAKE_RC_COMPILER ${IPODCTL_CE_COMPILER}-windres)
set(CMAKE_CXX_FLAGS_INIT "-march=armv4t -fno-exceptions -fno-rtti -D_WIN32_WCE=0x500")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
