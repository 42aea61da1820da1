# What every target of ours is built with.
add_library(audrel_options INTERFACE)
target_include_directories(audrel_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(audrel_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wdouble-promotion -Wformat=2
  # g++ 12 sees null dereferences inside its own library when it optimises.
  $<$<CXX_COMPILER_ID:Clang>:-Wnull-dereference>
  $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond -Wlogical-op -Wuseless-cast>)

# For builds where every warning is known; a compiler that we have not seen may only warn.
set(CMAKE_COMPILE_WARNING_AS_ERROR ${AUDREL_STRICT})

if(AUDREL_SANITIZE)
  add_compile_options(-fsanitize=${AUDREL_SANITIZE} -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${AUDREL_SANITIZE})
  if(AUDREL_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

find_program(AUDREL_CCACHE ccache)
if(AUDREL_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${AUDREL_CCACHE})
  set(CMAKE_OBJCXX_COMPILER_LAUNCHER ${AUDREL_CCACHE})
endif()

if(AUDREL_LINT)
  find_program(AUDREL_CLANG_TIDY NAMES clang-tidy REQUIRED)
  set(CMAKE_CXX_CLANG_TIDY ${AUDREL_CLANG_TIDY} --quiet --warnings-as-errors=*)
endif()

# audrel_library(name SOURCES... LINKS...)
function(audrel_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC audrel_options ${ARG_LINKS})
endfunction()

# What the thread sanitizer has something to say about.
add_custom_target(audrel_threads_tests)

# audrel_test(name SOURCES... LINKS... [LABELS...] [SERIAL] [TIMEOUT seconds]): one GoogleTest
# program, one test of CTest. SERIAL: it measures real time, so nothing else may run beside it.
function(audrel_test name)
  cmake_parse_arguments(ARG "SERIAL" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE audrel_options ${ARG_LINKS} GTest::gmock GTest::gtest_main)
  add_test(NAME ${name} COMMAND ${name} WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}"
    # PipeWire's modules stay loaded: what they and their libraries hold for good is no leak, and a
    # leak of theirs can be told from ours by its name.
    ENVIRONMENT "PIPEWIRE_DLCLOSE=false")
  if(ARG_SERIAL)
    set_tests_properties(${name} PROPERTIES RUN_SERIAL ON)
  endif()
  if("threads" IN_LIST ARG_LABELS)
    add_dependencies(audrel_threads_tests ${name})
  endif()
endfunction()
