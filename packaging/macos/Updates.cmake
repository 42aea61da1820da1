# What an application that updates itself is built with: Sparkle.framework, in the folder AUDREL_SPARKLE,
# and what is written into Info.plist for it. Without the two the updater reports an error at every
# start, and without it nobody reads them.
set(AUDREL_UPDATE_FEED "" CACHE STRING "URL of the appcast; with AUDREL_SPARKLE")
set(AUDREL_UPDATE_KEY "" CACHE STRING "Public EdDSA key of the updates; with AUDREL_SPARKLE")

if(AUDREL_SPARKLE AND AUDREL_UPDATE_FEED AND AUDREL_UPDATE_KEY)
  if(NOT EXISTS "${AUDREL_SPARKLE}/Sparkle.framework")
    message(FATAL_ERROR "There is no Sparkle.framework in \"${AUDREL_SPARKLE}\" (AUDREL_SPARKLE).")
  endif()
  if(NOT AUDREL_UPDATE_FEED MATCHES "^https://")
    message(FATAL_ERROR "AUDREL_UPDATE_FEED has to be fetched by https: \"${AUDREL_UPDATE_FEED}\".")
  endif()
elseif(AUDREL_SPARKLE OR AUDREL_UPDATE_FEED OR AUDREL_UPDATE_KEY)
  message(FATAL_ERROR "AUDREL_SPARKLE, AUDREL_UPDATE_FEED and AUDREL_UPDATE_KEY go together: "
    "give all of them, or none for a build without updates.")
endif()
