# Source layout convention: every `Foo.cpp` anywhere below a library's folder
# belongs to the library, every `FooTest.cpp` beside it to that library's test
# program. New units, and new subsystem folders, therefore need no CMake edits.

function(quillmont_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor
                                            -Wconversion -Wno-sign-conversion)
endfunction()

# quillmont_library(NAME <target> DIRS <dir>... LIBS <dep>...)
function(quillmont_library)
  cmake_parse_arguments(ARG "" "NAME" "DIRS;LIBS" ${ARGN})
  set(sources)
  foreach(dir IN LISTS ARG_DIRS)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS ${dir}/*.cpp)
    list(APPEND sources ${found})
  endforeach()
  list(FILTER sources EXCLUDE REGEX "Test\\.cpp$")
  add_library(${ARG_NAME} ${sources})
  target_include_directories(${ARG_NAME} PUBLIC
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:include/quillmont>)
  target_link_libraries(${ARG_NAME} PUBLIC ${ARG_LIBS})
  quillmont_warnings(${ARG_NAME})
endfunction()

# quillmont_tests(NAME <target> DIRS <dir>... LIBS <dep>...)
function(quillmont_tests)
  if(NOT QUILLMONT_BUILD_TESTS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "NAME" "DIRS;LIBS" ${ARGN})
  set(sources)
  foreach(dir IN LISTS ARG_DIRS)
    file(GLOB_RECURSE found CONFIGURE_DEPENDS ${dir}/*Test.cpp)
    list(APPEND sources ${found})
  endforeach()
  if(NOT sources)
    return()
  endif()
  add_executable(${ARG_NAME} ${sources})
  target_link_libraries(${ARG_NAME} PRIVATE ${ARG_LIBS} GTest::gmock GTest::gtest_main rapidcheck)
  quillmont_warnings(${ARG_NAME})
  gtest_discover_tests(${ARG_NAME} DISCOVERY_TIMEOUT 60 PROPERTIES ENVIRONMENT "TZ=UTC")
endfunction()

# quillmont_embed_entitlements(<target> <json file>): builds the program's
# entitlements into it, as a code signature would fix them; they are handed
# to ProcessEntitlements before main() runs.
function(quillmont_embed_entitlements target json)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${json})
  file(READ ${json} QUILLMONT_ENTITLEMENTS_JSON)
  set(generated ${CMAKE_CURRENT_BINARY_DIR}/${target}Entitlements.cpp)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/ProgramEntitlements.cpp.in ${generated} @ONLY)
  target_sources(${target} PRIVATE ${generated})
endfunction()

# quillmont_static_runtime(<target>): links the C++ runtime (libstdc++ and
# libgcc) into the program instead of loading the shared libraries at every
# start, where QUILLMONT_STATIC_CXX_RUNTIME allows it. Binding libstdc++.so's
# symbols was most of what a short command cost before it ran a line of its
# own. Not under the sanitizers, whose runtimes replace the allocator and
# expect the shared C++ runtime, and not for programs that link Qt (Qt's
# libraries load libstdc++.so anyway).
function(quillmont_static_runtime target)
  if(QUILLMONT_STATIC_CXX_RUNTIME AND NOT QUILLMONT_SANITIZE AND NOT QUILLMONT_FUZZ)
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc)
  endif()
endfunction()
