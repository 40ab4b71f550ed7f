# Cross-compiles for 64-bit Windows with Debian's mingw-w64 GCC (the
# posix-threads variant, package g++-mingw-w64-x86-64-posix) and runs the
# resulting programs under Wine (cmake/tov-wine), so ctest works unchanged.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(TOV_MINGW_TRIPLE x86_64-w64-mingw32)

find_program(CMAKE_C_COMPILER ${TOV_MINGW_TRIPLE}-gcc-posix REQUIRED)
find_program(CMAKE_CXX_COMPILER ${TOV_MINGW_TRIPLE}-g++-posix REQUIRED)
find_program(CMAKE_RC_COMPILER ${TOV_MINGW_TRIPLE}-windres REQUIRED)

# Headers, libraries and packages come from the target's sysroot only; the
# build's own programs come from the host.
set(CMAKE_FIND_ROOT_PATH /usr/${TOV_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The GCC runtime (libgcc, libstdc++, winpthread) is linked statically into
# every executable and into tovfoundation.dll, so the programs run in a fresh
# Wine prefix (or on a Windows machine) without any runtime DLLs beside them.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static")

# ctest and gtest_discover_tests start every Windows program through this
# wrapper: Wine with the build tree's own prefix, created on first use.
find_program(TOV_WINE_PROGRAM NAMES wine wine64 wine-stable REQUIRED)
set(TOV_WINEPREFIX "${CMAKE_BINARY_DIR}/wineprefix" CACHE PATH
    "Wine prefix the tests run in (created on first use)")
set(CMAKE_CROSSCOMPILING_EMULATOR
    "${CMAKE_CURRENT_LIST_DIR}/tov-wine;${TOV_WINE_PROGRAM};${TOV_WINEPREFIX}")
