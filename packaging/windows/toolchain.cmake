# Cross-building for Windows x86-64 with Debian's MinGW-w64; the POSIX thread model gives std::thread.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Only programs of the build system may be found, not its libraries. deps/build.sh prints the folders of the libraries.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUILLMOOR_WINDOWS_LIBRARIES)
set(CMAKE_FIND_ROOT_PATH ${QUILLMOOR_WINDOWS_LIBRARIES} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Windows 10 is the oldest system that is supported. The compiler's own libraries go into the program.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00")
# -fno-ipa-ra: without it the compiler relies on the registers that its own copy of an inline function preserves, but the
# linker may choose the copy of another file, compiled with other options. (On ELF systems it does not rely on that.)
set(CMAKE_CXX_FLAGS_INIT "-D_WIN32_WINNT=0x0A00 -fno-ipa-ra")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")
