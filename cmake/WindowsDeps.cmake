# Third-party code for the Windows build, compiled once into the build folder and reused by
# every later build there: SQLite from Debian's own source package (its amalgamation made
# natively, then cross-compiled), GoogleTest from Debian's /usr/src/googletest.

set(DOCMGR_SQLITE_DSC "" CACHE FILEPATH "Debian's sqlite3 source package (.dsc) for the Windows build")
set(DOCMGR_GTEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest sources for the Windows build")

set(_deps ${CMAKE_BINARY_DIR}/deps)
set(_amalgamation ${_deps}/sqlite-amalgamation)

function(_docmgr_run step)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE out
                  WORKING_DIRECTORY ${_deps})
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "SQLite for Windows: ${step} failed (${rc}):\n${out}")
  endif()
endfunction()

# The amalgamation is made by SQLite's own native build (tclsh), so the native configure
# runs here and only the single source file is cross-compiled.
if(NOT EXISTS ${_amalgamation}/sqlite3.c)
  if(NOT EXISTS "${DOCMGR_SQLITE_DSC}")
    message(FATAL_ERROR "Set DOCMGR_SQLITE_DSC to Debian's sqlite3 .dsc (make windows-test fetches it)")
  endif()
  file(REMOVE_RECURSE ${_deps}/sqlite-source ${_deps}/sqlite-native)
  file(MAKE_DIRECTORY ${_deps}/sqlite-native)
  message(STATUS "Making the SQLite amalgamation from ${DOCMGR_SQLITE_DSC}")
  _docmgr_run("unpacking" dpkg-source -x ${DOCMGR_SQLITE_DSC} ${_deps}/sqlite-source)
  # The host's own compiler: the tools that write the amalgamation run here.
  _docmgr_run("configuring" ${CMAKE_COMMAND} -E chdir ${_deps}/sqlite-native
              ${CMAKE_COMMAND} -E env --unset=CFLAGS CC=cc ${_deps}/sqlite-source/configure --disable-tcl)
  _docmgr_run("making sqlite3.c" ${CMAKE_COMMAND} -E chdir ${_deps}/sqlite-native ${CMAKE_COMMAND} -E env --unset=CFLAGS CC=cc make sqlite3.c)
  file(MAKE_DIRECTORY ${_amalgamation})
  file(COPY ${_deps}/sqlite-native/sqlite3.c ${_deps}/sqlite-native/sqlite3.h
       ${_deps}/sqlite-source/src/sqlite3ext.h DESTINATION ${_amalgamation})
  file(REMOVE_RECURSE ${_deps}/sqlite-source ${_deps}/sqlite-native)
endif()

add_library(docmgr_sqlite3 STATIC ${_amalgamation}/sqlite3.c)
target_include_directories(docmgr_sqlite3 SYSTEM PUBLIC ${_amalgamation})
target_compile_definitions(docmgr_sqlite3 PRIVATE SQLITE_THREADSAFE=1)
# Optimised, no debug information, no warnings: the file is large and not ours.
target_compile_options(docmgr_sqlite3 PRIVATE -O2 -g0 -w)

set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
set(gtest_disable_pthreads OFF CACHE BOOL "" FORCE)
add_subdirectory(${DOCMGR_GTEST_SOURCE}/googletest ${_deps}/googletest EXCLUDE_FROM_ALL)
if(NOT TARGET GTest::gtest)
  add_library(GTest::gtest ALIAS gtest)
endif()
