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

# macos_build(name SPARKLE-FOLDER): targets macos_<name>, and universal programs in <name>/.
set(last_build macos_sdk)
function(macos_build name sparkle)
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${name}")
  foreach(arch arm64 x86_64)
    add_custom_target(macos_${name}_${arch}
      COMMAND ${CMAKE_COMMAND} -S "${PROJECT_SOURCE_DIR}" -B "${folder}/${arch}" -G Ninja
        --toolchain "${CMAKE_CURRENT_SOURCE_DIR}/toolchain.cmake" --log-level=WARNING -Wno-dev
        -DAUDREL_MACOS_SDK=${sdk} -DAUDREL_MACOS_ARCH=${arch} -DAUDREL_SPARKLE=${sparkle}
        -DCMAKE_BUILD_TYPE=Release -DAUDREL_TESTS=OFF
      COMMAND ${CMAKE_COMMAND} --build "${folder}/${arch}" --target audrel audrel-record -- --quiet
      COMMENT "Building for macOS, ${name}, ${arch}"
      USES_TERMINAL VERBATIM)
    # One after another: each uses all processors.
    add_dependencies(macos_${name}_${arch} ${last_build})
    set(last_build macos_${name}_${arch})
  endforeach()
  set(last_build ${last_build} PARENT_SCOPE)
  add_custom_target(macos_${name}
    COMMAND llvm-lipo-19 -create "${folder}/arm64/audrel" "${folder}/x86_64/audrel"
      -output "${folder}/audrel"
    COMMAND llvm-lipo-19 -create "${folder}/arm64/audrel-record" "${folder}/x86_64/audrel-record"
      -output "${folder}/audrel-record"
    VERBATIM)
  add_dependencies(macos_${name} ${last_build})
endfunction()

macos_build(plain "")
macos_build(sparkle "${sdk}/Library/Frameworks")

set(plain "${CMAKE_CURRENT_BINARY_DIR}/plain")
add_custom_target(macos_app
  COMMAND "${PROJECT_SOURCE_DIR}/packaging/macos/make-bundle" "${PROJECT_BINARY_DIR}/Audrel.app"
    "${plain}/audrel" "${plain}/audrel-record" "${plain}/arm64/packaging/macos/Info.plist"
    "${PROJECT_SOURCE_DIR}/packaging/macos/Audrel.icns"
  COMMENT "Putting Audrel.app together"
  VERBATIM)
add_dependencies(macos_app macos_plain macos_sparkle)
add_dependencies(audrel_macos_checks macos_app)

# macos_check(name COMMAND...)
function(macos_check name)
  add_test(NAME ${name} COMMAND ${ARGN})
  set_tests_properties(${name} PROPERTIES LABELS macos TIMEOUT 120)
endfunction()

set(check "${CMAKE_CURRENT_SOURCE_DIR}/check-program.py")
set(known "${CMAKE_CURRENT_SOURCE_DIR}/exports.txt" "${PROJECT_SOURCE_DIR}/ui/MenuBuilder.cpp")
foreach(program audrel audrel-record)
  macos_check(macos_program_${program} "${check}" "${plain}/${program}" ${known})
  macos_check(macos_program_${program}_with_updater
    "${check}" "${CMAKE_CURRENT_BINARY_DIR}/sparkle/${program}" ${known} --sparkle)
endforeach()
macos_check(macos_negatives "${CMAKE_CURRENT_SOURCE_DIR}/check-negatives.py" "${sdk}"
  "${plain}/audrel")
macos_check(macos_bundle "${CMAKE_CURRENT_SOURCE_DIR}/check-bundle.py"
  "${PROJECT_BINARY_DIR}/Audrel.app" ${PROJECT_VERSION})
