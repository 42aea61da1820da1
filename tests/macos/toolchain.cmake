# Builds the program for macOS on Linux, with Debian's clang 19 and its linker, against the folder
# that makesdk.py made. Give AUDREL_MACOS_SDK (that folder) and AUDREL_MACOS_ARCH (arm64, x86_64).
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES AUDREL_MACOS_SDK AUDREL_MACOS_ARCH)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR ${AUDREL_MACOS_ARCH})
set(CMAKE_OSX_SYSROOT ${AUDREL_MACOS_SDK})
set(CMAKE_OSX_ARCHITECTURES ${AUDREL_MACOS_ARCH})

find_program(AUDREL_CLANG clang++-19 REQUIRED NO_CMAKE_FIND_ROOT_PATH)
foreach(language CXX OBJCXX)
  set(CMAKE_${language}_COMPILER ${AUDREL_CLANG})
  set(CMAKE_${language}_COMPILER_TARGET ${AUDREL_MACOS_ARCH}-apple-macos)
  set(CMAKE_${language}_FLAGS_INIT "-nostdinc++ -isystem ${AUDREL_MACOS_SDK}/usr/include/c++/v1")
endforeach()
set(CMAKE_AR llvm-ar-19)
set(CMAKE_RANLIB llvm-ranlib-19)
set(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19)

set(CMAKE_EXE_LINKER_FLAGS_INIT "-fuse-ld=lld -Wl,-fatal_warnings,-adhoc_codesign,-dead_strip")
