# The program built for macOS with this very CMake project, for both architectures, and the checks
# of the result.
set(sdk "${CMAKE_CURRENT_BINARY_DIR}/sdk")
file(GLOB_RECURSE declarations CONFIGURE_DEPENDS sdk/*)
add_custom_command(OUTPUT "${sdk}.stamp"
  COMMAND Python3::Interpreter "${CMAKE_CURRENT_SOURCE_DIR}/makesdk.py"
    "${CMAKE_CURRENT_SOURCE_DIR}/sdk" "${AUDREL_LIBCXX}" "${sdk}"
  COMMAND ${CMAKE_COMMAND} -E touch "${sdk}.stamp"
  DEPENDS makesdk.py exports.txt ${declarations}
  COMMENT "Making what stands for the macOS SDK"
  VERBATIM)
add_custom_target(macos_sdk DEPENDS "${sdk}.stamp")

# macos_build(arch [UNITY]): target macos_<arch>, which leaves the programs, as they are with and
# without the updater, in sparkle/<arch>/ and plain/<arch>/. One folder is built for both, since they
# differ in one file. UNITY: in few large files, which is quicker; that each file compiles by itself is
# seen on the other architecture. The oldest system is the project's own word: the toolchain says none,
# and tools/sw_vers says a newer one, as a developer's Mac does.
set(feed "https://example.invalid/appcast.xml?for=all&of=them")
set(key "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA=")
function(macos_build arch)
  cmake_parse_arguments(ARG "UNITY" "" "" ${ARGN})
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${arch}")
  set(commands)
  foreach(variant sparkle plain)
    set(updater -DAUDREL_SPARKLE= -DAUDREL_UPDATE_FEED= -DAUDREL_UPDATE_KEY=)
    if(variant STREQUAL "sparkle")
      set(updater "-DAUDREL_SPARKLE=${sdk}/Library/Frameworks" "-DAUDREL_UPDATE_FEED=${feed}"
        "-DAUDREL_UPDATE_KEY=${key}")
    endif()
    list(APPEND commands
      COMMAND ${CMAKE_COMMAND} -E env "PATH=${CMAKE_CURRENT_SOURCE_DIR}/tools:$ENV{PATH}"
        ${CMAKE_COMMAND} -S "${PROJECT_SOURCE_DIR}" -B "${folder}" -G Ninja
        --toolchain "${CMAKE_CURRENT_SOURCE_DIR}/toolchain.cmake" --log-level=WARNING -Wno-dev
        -DAUDREL_MACOS_SDK=${sdk} -DAUDREL_MACOS_ARCH=${arch} ${updater}
        -DCMAKE_BUILD_TYPE=Release -DAUDREL_TESTS=OFF -DAUDREL_STRICT=${AUDREL_STRICT}
        -DCMAKE_UNITY_BUILD=${ARG_UNITY}
        -DCMAKE_UNITY_BUILD_BATCH_SIZE=20
      COMMAND ${CMAKE_COMMAND} --build "${folder}" --target audrel audrel-record -- --quiet
      COMMAND ${CMAKE_COMMAND} -E make_directory "${CMAKE_CURRENT_BINARY_DIR}/${variant}/${arch}"
      COMMAND ${CMAKE_COMMAND} -E copy "${folder}/audrel" "${folder}/audrel-record"
        "${folder}/packaging/macos/Info.plist" "${CMAKE_CURRENT_BINARY_DIR}/${variant}/${arch}")
  endforeach()
  add_custom_target(macos_${arch} ${commands}
    COMMENT "Building for macOS on ${arch}"
    USES_TERMINAL VERBATIM)
  add_dependencies(macos_${arch} macos_sdk)
endfunction()

macos_build(arm64)
macos_build(x86_64 UNITY)
# One after the other: each uses all processors.
add_dependencies(macos_x86_64 macos_arm64)

set(commands)
foreach(variant plain sparkle)
  foreach(program audrel audrel-record)
    set(folder "${CMAKE_CURRENT_BINARY_DIR}/${variant}")
    list(APPEND commands COMMAND llvm-lipo-19 -create "${folder}/arm64/${program}"
      "${folder}/x86_64/${program}" -output "${folder}/${program}")
  endforeach()
endforeach()
set(plain "${CMAKE_CURRENT_BINARY_DIR}/plain")
add_custom_target(macos_app ${commands}
  COMMAND "${PROJECT_SOURCE_DIR}/packaging/macos/make-bundle" "${PROJECT_BINARY_DIR}/Audrel.app"
    "${plain}/audrel" "${plain}/audrel-record"
    "${plain}/arm64/Info.plist"
    "${PROJECT_SOURCE_DIR}/packaging/macos/Audrel.icns"
  COMMENT "Putting Audrel.app together"
  VERBATIM)
add_dependencies(macos_app macos_x86_64)
add_dependencies(audrel_macos_checks macos_app)

# macos_check(name COMMAND...)
function(macos_check name)
  add_test(NAME ${name} COMMAND ${ARGN})
  set_tests_properties(${name} PROPERTIES LABELS macos TIMEOUT 120)
endfunction()

set(check "${CMAKE_CURRENT_SOURCE_DIR}/check-program.py")
set(known "${CMAKE_CURRENT_SOURCE_DIR}/exports.txt" "${PROJECT_SOURCE_DIR}/platform/Selectors.h")
foreach(program audrel audrel-record)
  macos_check(macos_program_${program} "${check}" "${plain}/${program}" ${known})
  macos_check(macos_program_${program}_with_updater
    "${check}" "${CMAKE_CURRENT_BINARY_DIR}/sparkle/${program}" ${known} --sparkle)
endforeach()
macos_check(macos_negatives "${CMAKE_CURRENT_SOURCE_DIR}/check-negatives.py" "${sdk}"
  "${plain}/audrel")
macos_check(macos_linkage "${CMAKE_CURRENT_SOURCE_DIR}/check-linkage.py" "${sdk}")
macos_check(macos_bundle "${CMAKE_CURRENT_SOURCE_DIR}/check-bundle.py"
  "${PROJECT_BINARY_DIR}/Audrel.app" ${PROJECT_VERSION}
  "${CMAKE_CURRENT_BINARY_DIR}/sparkle/arm64/Info.plist" "${feed}" "${key}")
