# Windows code on Linux: MinGW-w64 with POSIX threads compiles, Wine runs.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(ov_mingw x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${ov_mingw}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ov_mingw}-g++-posix)
set(CMAKE_RC_COMPILER ${ov_mingw}-windres)

# Libraries and headers come from the compiler's own tree; what is staged for us is named with full paths.
set(CMAKE_FIND_ROOT_PATH /usr/${ov_mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/run_under_wine.sh)
