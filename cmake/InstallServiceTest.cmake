# Installs the build twice, as a package for /usr (through DESTDIR) and into a
# home's ~/.local, and checks that each time the sync service lies where
# systemd looks for that prefix's user units and starts the program that
# prefix holds.
file(REMOVE_RECURSE ${WORK_DIR})
function(install_and_check prefix unit_dir)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env DESTDIR=${WORK_DIR}/destdir
                          ${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${prefix}
                  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "installing into ${prefix} failed:\n${output}")
  endif()
  set(unit ${WORK_DIR}/destdir${unit_dir}/quillmont-sync.service)
  if(NOT EXISTS ${unit})
    file(GLOB_RECURSE found RELATIVE ${WORK_DIR}/destdir ${WORK_DIR}/destdir/*quillmont-sync.service)
    message(FATAL_ERROR "${prefix}: no service in ${unit_dir} (found: ${found})")
  endif()
  file(STRINGS ${unit} exec REGEX "^ExecStart=")
  if(NOT exec STREQUAL "ExecStart=${prefix}/bin/quillmont sync --watch")
    message(FATAL_ERROR "${prefix}: the service starts \"${exec}\"")
  endif()
  if(NOT EXISTS ${WORK_DIR}/destdir${prefix}/bin/quillmont)
    message(FATAL_ERROR "${prefix}: the program the service starts is not installed")
  endif()
  file(GLOB_RECURSE units ${WORK_DIR}/destdir${prefix}/*quillmont-sync.service)
  list(LENGTH units count)
  if(NOT count EQUAL 1)
    message(FATAL_ERROR "${prefix}: ${count} services installed: ${units}")
  endif()
endfunction()

install_and_check(/usr ${USR_UNIT_DIR})
# A home prefix: systemd reads user units from $XDG_DATA_HOME/systemd/user.
install_and_check(${WORK_DIR}/home/.local ${WORK_DIR}/home/.local/share/systemd/user)
file(REMOVE_RECURSE ${WORK_DIR})
