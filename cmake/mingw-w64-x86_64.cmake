# mingw-w64-x86_64.cmake - cross-compiles for 64-bit Windows with Debian's
# mingw-w64 toolchain.
#
# The posix-threads flavour of the compiler is used: its runtime has the
# threads and std::filesystem support the standard library needs. Everything
# is linked statically, so the one executable runs on a plain Windows machine
# without the toolchain's DLLs beside it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(TNF_MINGW_PREFIX x86_64-w64-mingw32)
find_program(CMAKE_C_COMPILER NAMES ${TNF_MINGW_PREFIX}-gcc-posix ${TNF_MINGW_PREFIX}-gcc REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${TNF_MINGW_PREFIX}-g++-posix ${TNF_MINGW_PREFIX}-g++ REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${TNF_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${TNF_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# Test programs run under wine when it is there. Debian's wine64 package puts
# the loader outside the search path unless the wine package is installed too.
if(NOT DEFINED CMAKE_CROSSCOMPILING_EMULATOR)
  find_program(TNF_WINE NAMES wine64 wine PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
  if(TNF_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${TNF_WINE})
  endif()
endif()
