# Where a distribution's package, or `cmake --install`, puts things.
include(GNUInstallDirs)

if(AUDREL_PLATFORM STREQUAL "linux")
  install(TARGETS audrel audrel-record)
  install(FILES packaging/linux/audrel.1 packaging/linux/audrel-record.1
    DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
  foreach(program audrel audrel-record)
    install(FILES packaging/linux/completions/${program}.bash
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME ${program})
    install(FILES packaging/linux/completions/_${program}
      DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
    install(FILES packaging/linux/completions/${program}.fish
      DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  endforeach()

  set(application io.github.audrel.Audrel)
  install(FILES packaging/linux/${application}.desktop
    DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
  # The bus starts the program by its whole path, so the service is written once the prefix is known.
  set(service ${PROJECT_BINARY_DIR}/packaging/linux/${application}.service)
  install(CODE "
    cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX NORMALIZE OUTPUT_VARIABLE prefix)
    cmake_path(APPEND prefix \"${CMAKE_INSTALL_BINDIR}\" audrel OUTPUT_VARIABLE program)
    configure_file(\"${PROJECT_SOURCE_DIR}/packaging/linux/${application}.service.in\"
      \"${service}\" @ONLY)")
  install(FILES ${service} DESTINATION ${CMAKE_INSTALL_DATADIR}/dbus-1/services)
  install(FILES packaging/linux/${application}.metainfo.xml
    DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo)
  install(DIRECTORY packaging/linux/icons/hicolor DESTINATION ${CMAKE_INSTALL_DATADIR}/icons)
  install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()
