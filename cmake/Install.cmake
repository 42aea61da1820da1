# Where a distribution's package, or `cmake --install`, puts things.
include(GNUInstallDirs)

if(AUDREL_PLATFORM STREQUAL "linux")
  install(TARGETS audrel-record)
  install(FILES packaging/linux/audrel-record.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  install(FILES packaging/linux/completions/audrel-record.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME audrel-record)
  install(FILES packaging/linux/completions/_audrel-record
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
  install(FILES packaging/linux/completions/audrel-record.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()
