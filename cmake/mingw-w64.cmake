# A toolchain for 64-bit Windows with Debian's mingw-w64:
#   cmake -S . -B build/windows --toolchain cmake/mingw-w64.cmake
# Packages: g++-mingw-w64-x86-64-posix; wine64 to run the tests.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
# The other variant has neither std::mutex nor std::thread.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
# Links the compiler's libraries statically: a DLL must run on machines without mingw-w64.
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-static")
endforeach()

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
foreach(kind LIBRARY INCLUDE PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
endforeach()

# Debian's wine loader isn't in PATH.
find_program(MC3DS_WINE NAMES wine64 wine PATHS /usr/lib/wine)
if(MC3DS_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${MC3DS_WINE})
endif()
