# Windows CE 5 on ARM with the compiler for bare ARM. On Windows CE the stack is aligned to only 4
# bytes, so there must be no doubleword loads. ARMv4T has none.
#
# The code is ARM code. Thumb code would be a third smaller, but a request would execute a fifth more
# instructions, and only a platform with support for Thumb could call the exports and start the
# reader's thread.
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_C_COMPILER arm-none-eabi-gcc)
set(CMAKE_CXX_COMPILER arm-none-eabi-g++)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

# Enumerations are integers and wide characters have 16 bits, as with the platform's compiler. Local
# static objects have no guards: the library has none that two threads could construct. The debug
# information is for scripts/parts/image-layers; the image has none.
#
# When it optimises for size, the compiler takes a function of one memory access for as large as a
# call and calls it. Inlining what it takes for at most 2 instructions larger makes the image smaller.
set(IPODCTL_WINCE_FLAGS
    "-g -marm -march=armv4t -mfloat-abi=soft -fshort-wchar -fno-short-enums -fno-unwind-tables -fno-asynchronous-unwind-tables -ffunction-sections -fdata-sections --param=max-inline-insns-size=2")
set(CMAKE_C_FLAGS_INIT "${IPODCTL_WINCE_FLAGS}")
set(CMAKE_CXX_FLAGS_INIT "${IPODCTL_WINCE_FLAGS} -fno-exceptions -fno-rtti -fno-threadsafe-statics")
set(CMAKE_ASM_FLAGS_INIT "-marm -march=armv4t")

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
