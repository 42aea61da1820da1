# Chooses the one folder of platform/ that is compiled.
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(AUDREL_PLATFORM linux)
elseif(CMAKE_SYSTEM_NAME STREQUAL "Darwin")
  set(AUDREL_PLATFORM macos)
  include(cmake/ObjectiveC.cmake)
else()
  message(FATAL_ERROR
    "Audrel has no platform for '${CMAKE_SYSTEM_NAME}'. "
    "To add one, write platform/<name> and name it in cmake/Platform.cmake.")
endif()
