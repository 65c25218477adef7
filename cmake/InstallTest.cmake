# Installs the build into WORK_DIR/prefix and builds the consumer project in
# SOURCE_DIR against it. Fails on the first step that fails.
file(REMOVE_RECURSE ${WORK_DIR})
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN} failed:\n${output}")
  endif()
endfunction()
run(${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -G Ninja -DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer)
# The installed program carries its entitlements, so it uses the shared group folder.
run(${CMAKE_COMMAND} -E env QUILLMONT_HOME=${WORK_DIR}/home ${WORK_DIR}/prefix/bin/quillmont book 15)
run(${CMAKE_COMMAND} -E env QUILLMONT_HOME=${WORK_DIR}/home ${WORK_DIR}/prefix/bin/quillmont doctor)
foreach(installed share/applications/quillmont.desktop share/applications/quillmont-widget.desktop
                  share/icons/hicolor/scalable/apps/quillmont.svg share/bash-completion/completions/quillmont
                  share/zsh/vendor-completions/_quillmont share/fish/vendor_completions.d/quillmont.fish
                  share/man/man1/quillmont.1 lib/cmake/Quillmont/QuillmontConfig.cmake
                  share/systemd/user/quillmont-sync.service)
  if(NOT EXISTS ${WORK_DIR}/prefix/${installed})
    message(FATAL_ERROR "not installed: ${installed}")
  endif()
endforeach()
if(NOT EXISTS ${WORK_DIR}/home/group.io.quillmont.ledger/Quillmont.store)
  message(FATAL_ERROR "the installed program did not use the shared group folder")
endif()
# The installed widget draws the same store's balance without a display.
if(EXISTS ${WORK_DIR}/prefix/bin/quillmont-widget)
  run(${CMAKE_COMMAND} -E env QUILLMONT_HOME=${WORK_DIR}/home QT_QPA_PLATFORM=offscreen
      ${WORK_DIR}/prefix/bin/quillmont-widget --render ${WORK_DIR}/widget.png --size medium)
  if(NOT EXISTS ${WORK_DIR}/widget.png)
    message(FATAL_ERROR "the installed widget drew no picture")
  endif()
endif()
