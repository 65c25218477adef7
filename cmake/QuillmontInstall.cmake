# Installation: the libraries with their headers and a CMake package
# (find_package(Quillmont) gives Quillmont::QuillmontKit, Quillmont::QuillmontWidget and
# Quillmont::QuillmontApp), the programs
# (their entitlements are built into them) and the desktop integration files: the launcher, the
# quillmont:// handler, the icon, the shell completions and the manual page.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)


install(TARGETS QuillmontPlatform QuillmontKit QuillmontWidget QuillmontApp EXPORT QuillmontTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(dir platform core widget app)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${dir}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quillmont/${dir}
    FILES_MATCHING PATTERN "*.h" PATTERN "*Test*" EXCLUDE)
endforeach()
install(EXPORT QuillmontTargets NAMESPACE Quillmont:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Quillmont)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QuillmontConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QuillmontConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Quillmont)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuillmontConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QuillmontConfig.cmake ${PROJECT_BINARY_DIR}/QuillmontConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Quillmont)

if(TARGET quillmont)
  install(TARGETS quillmont RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
if(TARGET quillmont-widget)
  install(TARGETS quillmont-widget RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
# The launcher, and the handler of quillmont:// links (which opens the
# Quillmont window of the running widget, or a new one).
install(FILES ${PROJECT_SOURCE_DIR}/share/quillmont.desktop ${PROJECT_SOURCE_DIR}/share/quillmont-widget.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES ${PROJECT_SOURCE_DIR}/share/icons/quillmont.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
# The user service that runs `quillmont sync --watch`, written at install
# time so that it names the program where `cmake --install --prefix` put it,
# and placed where systemd looks for user units of that prefix: for /usr the
# systemd package's folder (lib/systemd/user), for any other prefix
# share/systemd/user, which systemd finds below $XDG_DATA_HOME (~/.local)
# and $XDG_DATA_DIRS (/usr/local/share).
if(TARGET quillmont)
  pkg_get_variable(QUILLMONT_SYSTEMD_USER_UNIT_DIR systemd systemduserunitdir)
  if(NOT QUILLMONT_SYSTEMD_USER_UNIT_DIR MATCHES "^/usr/")
    set(QUILLMONT_SYSTEMD_USER_UNIT_DIR /usr/lib/systemd/user)
  endif()
  install(CODE "
    set(quillmont_bindir \"${CMAKE_INSTALL_BINDIR}\")
    if(NOT IS_ABSOLUTE \"\${quillmont_bindir}\")
      set(quillmont_bindir \"\${CMAKE_INSTALL_PREFIX}/\${quillmont_bindir}\")
    endif()
    set(QUILLMONT_SYNC_PROGRAM \"\${quillmont_bindir}/quillmont\")
    if(CMAKE_INSTALL_PREFIX STREQUAL \"/usr\" OR CMAKE_INSTALL_PREFIX STREQUAL \"/usr/\")
      set(quillmont_units \"${QUILLMONT_SYSTEMD_USER_UNIT_DIR}\")
    else()
      set(quillmont_units \"\${CMAKE_INSTALL_PREFIX}/share/systemd/user\")
    endif()
    configure_file(\"${PROJECT_SOURCE_DIR}/share/systemd/quillmont-sync.service.in\"
                   \"${PROJECT_BINARY_DIR}/share/install/quillmont-sync.service\" @ONLY)
    file(INSTALL DESTINATION \"\${quillmont_units}\" TYPE FILE
         FILES \"${PROJECT_BINARY_DIR}/share/install/quillmont-sync.service\")
  ")
endif()
# The completions for bash, zsh and fish and the manual page, which the build
# writes from the program's own commands (cli/CMakeLists.txt).
if(TARGET quillmont_reference)
  install(FILES ${PROJECT_BINARY_DIR}/share/quillmont.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME quillmont)
  install(FILES ${PROJECT_BINARY_DIR}/share/_quillmont DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
  install(FILES ${PROJECT_BINARY_DIR}/share/quillmont.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
  install(FILES ${PROJECT_BINARY_DIR}/share/quillmont.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

# The install works for a consumer: install into a scratch prefix and build a
# small program against find_package(Quillmont). The user service lands where
# systemd finds it and names the installed program, for /usr and a home prefix.
if(QUILLMONT_BUILD_TESTS AND NOT QUILLMONT_SANITIZE)
  add_test(NAME install.ConsumerBuildsAgainstThePackage
    COMMAND ${CMAKE_COMMAND} -DBINARY_DIR=${PROJECT_BINARY_DIR} -DSOURCE_DIR=${PROJECT_SOURCE_DIR}/cmake/consumer
            -DWORK_DIR=${PROJECT_BINARY_DIR}/install-test -P ${PROJECT_SOURCE_DIR}/cmake/InstallTest.cmake)
  if(TARGET quillmont)
    add_test(NAME install.SyncServiceIsWhereSystemdLooks
      COMMAND ${CMAKE_COMMAND} -DBINARY_DIR=${PROJECT_BINARY_DIR} -DWORK_DIR=${PROJECT_BINARY_DIR}/install-service-test
              -DUSR_UNIT_DIR=${QUILLMONT_SYSTEMD_USER_UNIT_DIR} -P ${PROJECT_SOURCE_DIR}/cmake/InstallServiceTest.cmake)
  endif()
endif()
