# Installation: the libraries with their headers and a CMake package
# (find_package(Quillmont) gives Quillmont::QuillmontKit, Quillmont::QuillmontWidget and
# Quillmont::QuillmontApp), the programs
# (their entitlements are built into them) and the desktop integration files: the launcher, the
# quillmont:// handler, the icon, the AppStream metadata, the shell completions, the manual pages,
# the GNOME Shell extension and the Plasma widget.
# Two components: "runtime" (the programs and what the desktop finds beside
# them; the Debian package holds these) and "development" (libraries,
# headers, the CMake package). An install without --component gets both.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)


install(TARGETS QuillmontPlatform QuillmontKit QuillmontWidget QuillmontApp EXPORT QuillmontTargets
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
foreach(dir platform core widget app)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${dir}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quillmont/${dir}
    COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN "*Test*" EXCLUDE)
endforeach()
install(EXPORT QuillmontTargets NAMESPACE Quillmont:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Quillmont
  COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QuillmontConfig.cmake.in
  ${PROJECT_BINARY_DIR}/QuillmontConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Quillmont)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuillmontConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QuillmontConfig.cmake ${PROJECT_BINARY_DIR}/QuillmontConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Quillmont COMPONENT development)

if(TARGET quillmont)
  install(TARGETS quillmont RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()
if(TARGET quillmont-widget)
  install(TARGETS quillmont-widget RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
endif()
# The launcher, and the handler of quillmont:// links (which opens the
# Quillmont window of the running widget, or a new one).
install(FILES ${PROJECT_SOURCE_DIR}/share/quillmont.desktop ${PROJECT_SOURCE_DIR}/share/quillmont-widget.desktop
  DESTINATION ${CMAKE_INSTALL_DATADIR}/applications COMPONENT runtime)
install(FILES ${PROJECT_SOURCE_DIR}/share/icons/quillmont.svg
  DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps COMPONENT runtime)
install(FILES ${PROJECT_SOURCE_DIR}/share/metainfo/io.quillmont.Quillmont.metainfo.xml
  DESTINATION ${CMAKE_INSTALL_DATADIR}/metainfo COMPONENT runtime)
install(FILES ${PROJECT_SOURCE_DIR}/share/man/quillmont-widget.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
  COMPONENT runtime)
# The GNOME Shell extension and the Plasma widget, where the desktops look
# for system-wide ones. Both load the one shared script, quillmontFeed.js,
# which the source folders reach through a link.
set(QUILLMONT_FEED_SCRIPT ${PROJECT_SOURCE_DIR}/share/integrations/quillmontFeed.js)
set(quillmont_extension share/gnome-shell/extensions/quillmont@quillmont.io)
install(FILES ${PROJECT_SOURCE_DIR}/${quillmont_extension}/metadata.json
              ${PROJECT_SOURCE_DIR}/${quillmont_extension}/extension.js
              ${PROJECT_SOURCE_DIR}/${quillmont_extension}/stylesheet.css
              ${QUILLMONT_FEED_SCRIPT}
  DESTINATION ${CMAKE_INSTALL_DATADIR}/gnome-shell/extensions/quillmont@quillmont.io COMPONENT runtime)
set(quillmont_plasmoid share/plasma/plasmoids/io.quillmont.balance)
install(FILES ${PROJECT_SOURCE_DIR}/${quillmont_plasmoid}/metadata.json
  DESTINATION ${CMAKE_INSTALL_DATADIR}/plasma/plasmoids/io.quillmont.balance COMPONENT runtime)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/${quillmont_plasmoid}/contents/ui
  DESTINATION ${CMAKE_INSTALL_DATADIR}/plasma/plasmoids/io.quillmont.balance/contents COMPONENT runtime)
install(FILES ${QUILLMONT_FEED_SCRIPT}
  DESTINATION ${CMAKE_INSTALL_DATADIR}/plasma/plasmoids/io.quillmont.balance/contents/code COMPONENT runtime)
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
  " COMPONENT runtime)
endif()
# The completions for bash, zsh and fish and the manual page, which the build
# writes from the program's own commands (cli/CMakeLists.txt).
if(TARGET quillmont_reference)
  install(FILES ${PROJECT_BINARY_DIR}/share/quillmont.bash
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME quillmont COMPONENT runtime)
  install(FILES ${PROJECT_BINARY_DIR}/share/_quillmont DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions
    COMPONENT runtime)
  install(FILES ${PROJECT_BINARY_DIR}/share/quillmont.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT runtime)
  install(FILES ${PROJECT_BINARY_DIR}/share/quillmont.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
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

# The desktops' integrations: their shared logic under gjs (against the real
# program) and the Plasma widget's model under qmltestrunner, its QML checked
# by qmllint; the extension in a headless GNOME Shell; the Debian package
# built from this tree and checked where it lands. Each is skipped (77) only when its runtime is not installed.
if(QUILLMONT_BUILD_TESTS AND NOT QUILLMONT_SANITIZE AND TARGET quillmont)
  set(quillmont_run_if ${PROJECT_SOURCE_DIR}/scripts/run-if-installed.sh)
  add_test(NAME desktops.SharedLogicUnderGjs
    COMMAND ${quillmont_run_if} gjs ${PROJECT_SOURCE_DIR}/share/integrations/quillmontFeedTest.js
            ${PROJECT_SOURCE_DIR}/share/integrations $<TARGET_FILE:quillmont>
            ${PROJECT_SOURCE_DIR}/${quillmont_extension}/extension.js)
  add_test(NAME desktops.PlasmaWidgetModel
    COMMAND ${quillmont_run_if} /usr/lib/qt5/bin/qmltestrunner -input ${PROJECT_SOURCE_DIR}/share/integrations/tst_quillmontmodel.qml)
  file(GLOB quillmont_plasmoid_qml ${PROJECT_SOURCE_DIR}/${quillmont_plasmoid}/contents/ui/*.qml)
  add_test(NAME desktops.PlasmaWidgetQmlIsWellFormed
    COMMAND ${quillmont_run_if} /usr/lib/qt5/bin/qmllint ${quillmont_plasmoid_qml})
  set_tests_properties(desktops.SharedLogicUnderGjs desktops.PlasmaWidgetModel desktops.PlasmaWidgetQmlIsWellFormed
    PROPERTIES SKIP_RETURN_CODE 77 ENVIRONMENT "QT_QPA_PLATFORM=offscreen;TZ=UTC")
  # A headless GNOME Shell loads the extension from where the package puts it.
  add_test(NAME desktops.GnomeShellLoadsTheExtension
    COMMAND ${PROJECT_SOURCE_DIR}/scripts/test-gnome-shell.sh ${PROJECT_BINARY_DIR})
  set_tests_properties(desktops.GnomeShellLoadsTheExtension PROPERTIES SKIP_RETURN_CODE 77 RUN_SERIAL TRUE TIMEOUT 180)
  if(TARGET quillmont-widget AND TARGET quillmont_reference)
    add_test(NAME install.DebianPackage
      COMMAND ${PROJECT_SOURCE_DIR}/scripts/test-package.sh ${PROJECT_BINARY_DIR})
    set_tests_properties(install.DebianPackage PROPERTIES SKIP_RETURN_CODE 77 RUN_SERIAL TRUE)
  endif()
endif()
