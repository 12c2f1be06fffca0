# Cross build of the 32-bit Windows programs with Debian's mingw-w64 (i686), posix
# thread model (std::thread and std::mutex need it). Programs built here run on this
# machine under Wine, which tests and CTest use as the emulator.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(SV140_MINGW i686-w64-mingw32)
find_program(CMAKE_C_COMPILER NAMES ${SV140_MINGW}-gcc-posix ${SV140_MINGW}-gcc REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${SV140_MINGW}-g++-posix ${SV140_MINGW}-g++ REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${SV140_MINGW}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${SV140_MINGW})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(SV140_WINE NAMES wine)
if(SV140_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${SV140_WINE})
endif()
