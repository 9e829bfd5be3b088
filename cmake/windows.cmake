# Toolchain: Windows programs of 64 bits, made on Debian by g++-mingw-w64-x86-64-posix.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(HOUSE_CROSS x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${HOUSE_CROSS}-gcc-posix)
set(CMAKE_CXX_COMPILER ${HOUSE_CROSS}-g++-posix)
set(CMAKE_RC_COMPILER ${HOUSE_CROSS}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${HOUSE_CROSS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# The compiler's own libraries go into each program: nothing has to lie beside it.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
