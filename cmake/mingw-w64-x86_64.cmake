# Cross build for 64-bit Windows with Debian's mingw-w64 (the -posix compilers: their
# threads are what std::thread and GoogleTest need). Programs run under Wine, so ctest
# and test discovery work unchanged.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(DOCMGR_MINGW_TRIPLET x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${DOCMGR_MINGW_TRIPLET}-gcc-posix)
set(CMAKE_CXX_COMPILER ${DOCMGR_MINGW_TRIPLET}-g++-posix)
set(CMAKE_RC_COMPILER ${DOCMGR_MINGW_TRIPLET}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${DOCMGR_MINGW_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Wine keeps its prefix in the build folder and stays quiet; no display is needed for
# console programs.
find_program(DOCMGR_WINE NAMES wine wine-stable wine64 PATHS /usr/lib/wine REQUIRED)
set(DOCMGR_WINEPREFIX ${CMAKE_BINARY_DIR}/wineprefix)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_COMMAND} -E env WINEPREFIX=${DOCMGR_WINEPREFIX} WINEDEBUG=-all
    WINEDLLOVERRIDES=mscoree,mshtml= ${DOCMGR_WINE})
