# The same, unchanged adapters compiled for this machine with the Objective-C ABI of macOS, and run
# on a runtime and frameworks of the tests' own.
if(NOT CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  message(STATUS "The adapters of macOS are executed on x86_64 alone")
  return()
endif()

# What one file imports makes macros of what another one names.
set(isQuick ${CMAKE_UNITY_BUILD})
set(CMAKE_UNITY_BUILD OFF)

add_library(macos_abi INTERFACE)
target_compile_options(macos_abi INTERFACE
  "$<$<COMPILE_LANGUAGE:OBJCXX>:-fobjc-runtime=macosx-14.2>"
  "SHELL:-isystem ${CMAKE_CURRENT_SOURCE_DIR}/sdk/usr/local/include"
  "SHELL:-iframework ${CMAKE_CURRENT_SOURCE_DIR}/sdk/System/Library/Frameworks"
  "SHELL:-iframework ${CMAKE_CURRENT_SOURCE_DIR}/sdk/Library/Frameworks")

# The runtime is what implements retain and release, so the compiler must not add any.
add_library(macos_runtime OBJECT
  runtime/Blocks.cpp runtime/Classes.cpp runtime/Exceptions.cpp runtime/Functions.cpp
  runtime/Messages.cpp runtime/Ownership.cpp runtime/Root.mm)
target_link_libraries(macos_runtime PUBLIC audrel_options macos_abi)
target_compile_options(macos_runtime PRIVATE -Wno-pedantic -Wno-old-style-cast
  -Wno-deprecated-objc-isa-usage
  "$<$<COMPILE_LANGUAGE:OBJCXX>:-fno-objc-arc>")

add_library(macos_frameworks OBJECT
  frameworks/FakeAVFAudio.mm frameworks/FakeAppKit.mm frameworks/FakeCoreAudio.mm
  frameworks/FakeFoundation.mm frameworks/FakeGraphics.mm frameworks/FakeMac.cpp
  frameworks/FakeSparkle.mm frameworks/FakeSystem.mm frameworks/FileOnDisk.cpp)
target_link_libraries(macos_frameworks PUBLIC audrel_options macos_abi)
# They implement a part of what is declared, and trust the declarations where theirs differ.
target_compile_options(macos_frameworks PRIVATE "$<$<COMPILE_LANGUAGE:OBJCXX>:-w>")

# The platform as its own folder builds it, but for this ABI.
add_subdirectory("${PROJECT_SOURCE_DIR}/platform/macos" platform)
target_link_libraries(audrel_macos_platform PUBLIC macos_abi)
# Optimised, whatever the rest is: only then references go before their scope ends.
target_compile_options(audrel_macos_platform PRIVATE -O1)

# A unity build is meant to be quick, and each file here stays by itself.
if(isQuick)
  set(common "$<$<COMPILE_LANGUAGE:OBJCXX>:${CMAKE_CURRENT_SOURCE_DIR}/StandardLibrary.h>")
  target_precompile_headers(macos_frameworks PRIVATE "${common}")
  target_precompile_headers(audrel_macos_platform PRIVATE "${common}")
endif()

# What the thread sanitizer has something to say about.
add_custom_target(audrel_macos_threads_tests)

# macos_test(name SOURCES... LINKS... [THREADS])
function(macos_test name)
  cmake_parse_arguments(ARG "THREADS" "" "SOURCES;LINKS" ${ARGN})
  set(threads "")
  if(ARG_THREADS)
    set(threads macos-threads)
    add_dependencies(audrel_macos_threads_tests ${name})
  endif()
  audrel_test(${name} SOURCES ${ARG_SOURCES}
    LINKS ${ARG_LINKS} audrel_macos_platform macos_frameworks macos_runtime
    LABELS macos ${threads})
  add_dependencies(audrel_macos_checks ${name})
endfunction()

macos_test(macos_adapters_test
  SOURCES
    execution/AppKitTest.mm
    execution/AudioFrameworkTest.mm
    execution/AudioHardwareTest.mm
    execution/DeclarationsTest.mm
    execution/FoundationTest.mm
    execution/OwnDefaultsTest.mm
    execution/RuntimeTest.mm
    "${PROJECT_SOURCE_DIR}/tests/contract/OwnDefaults.mm"
  LINKS audrel_ui)
# An object is gone as early as the declarations allow.
set_source_files_properties(execution/DeclarationsTest.mm PROPERTIES COMPILE_OPTIONS -O1)
macos_test(macos_threads_test SOURCES execution/DispatchTest.mm execution/IOProcTest.mm THREADS)

# What every platform promises, in the very files that a Mac compiles.
set(contract "${PROJECT_SOURCE_DIR}/tests/contract")
macos_test(macos_contract_test
  SOURCES
    "${contract}/MacInterfacesTest.cpp"
    "${contract}/MacQueueTest.cpp"
    execution/StandInForMac.cpp
  LINKS audrel_contract audrel_engine audrel_fakes
  THREADS)

# What a Mac has in the place of StandInForMac.cpp; here it is only compiled.
add_library(macos_contract_on_a_mac OBJECT "${contract}/RealMac.cpp")
target_link_libraries(macos_contract_on_a_mac PRIVATE audrel_options)
add_dependencies(audrel_macos_checks macos_contract_on_a_mac)

macos_test(macos_program_test SOURCES execution/ProgramTest.mm LINKS audrel_app audrel_fakes THREADS)

if(AUDREL_SANITIZE MATCHES "address")
  # It counts with the sanitizer's allocator.
  macos_test(macos_soak_test SOURCES execution/SoakTest.mm LINKS audrel_app audrel_fakes)
endif()

# A session that the program has to tell, however it was built.
add_library(macos_story OBJECT execution/SessionStory.mm)
target_link_libraries(macos_story PUBLIC audrel_options macos_abi GTest::gtest)

macos_test(macos_transcripts_test
  SOURCES
    "${PROJECT_SOURCE_DIR}/tests/engine/EngineStories.cpp"
    execution/EngineTranscriptTest.mm
    execution/SessionTranscriptTest.mm
    execution/SparkleTest.mm
    "${PROJECT_SOURCE_DIR}/platform/macos/SparkleUpdater.mm"
  LINKS audrel_app audrel_fakes macos_story)
target_compile_definitions(macos_transcripts_test PRIVATE AUDREL_SOURCE_DIR="${PROJECT_SOURCE_DIR}")

# The programs as they were linked for macOS, on the same runtime and frameworks.
set(app "${PROJECT_BINARY_DIR}/Audrel.app/Contents/MacOS")
set(makeelf "${CMAKE_CURRENT_SOURCE_DIR}/loader/makeelf.py")
set(commands)
set(objects)
foreach(program "audrelApp|${app}/Audrel" "audrelRecord|${app}/audrel-record"
    "audrelWithUpdater|${CMAKE_CURRENT_BINARY_DIR}/sparkle/audrel")
  string(REPLACE "|" ";" program "${program}")
  list(GET program 0 name)
  list(GET program 1 file)
  set(made "${CMAKE_CURRENT_BINARY_DIR}/${name}")
  list(APPEND commands COMMAND Python3::Interpreter "${makeelf}" "${file}" ${name} "${made}.s"
    COMMAND ${CMAKE_CXX_COMPILER} -c "${made}.s" -o "${made}.o")
  list(APPEND objects "${made}.o")
endforeach()
add_custom_target(macos_loaded_programs ${commands} BYPRODUCTS ${objects}
  COMMENT "Writing the programs for macOS as objects for Linux"
  VERBATIM)
add_dependencies(macos_loaded_programs macos_app)

audrel_test(macos_loaded_program_test
  SOURCES loader/HostSymbols.cpp loader/LoadedProgram.cpp loader/LoadedProgramTest.mm ${objects}
  LINKS audrel_fakes macos_frameworks macos_runtime macos_story
  LABELS macos)
# This process's own C++ library goes first.
target_link_libraries(macos_loaded_program_test PRIVATE stdc++ -l:libc++.so.1 -l:libc++abi.so.1)
add_dependencies(macos_loaded_program_test macos_loaded_programs)
add_dependencies(audrel_macos_checks macos_loaded_program_test)
