# Objective-C++, for platform/macos.
set(CMAKE_OBJCXX_COMPILER "${CMAKE_CXX_COMPILER}" CACHE FILEPATH "The compiler of Objective-C++")
enable_language(OBJCXX)
set(CMAKE_OBJCXX_STANDARD 20)
set(CMAKE_OBJCXX_STANDARD_REQUIRED ON)
set(CMAKE_OBJCXX_EXTENSIONS OFF)
add_compile_options("$<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-arc;-fblocks>")
