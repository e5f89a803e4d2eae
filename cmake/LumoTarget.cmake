# lumo_target(<target>): what every target of this project compiles with. The flags stay private to the target, so
# that a consumer of the installed packages never inherits them.
function(lumo_target target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Werror)
  # g++ 12 takes appending to a temporary std::string for overlapping memory (its bug 105651).
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
  if(LUMO_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${LUMO_SANITIZE} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    # g++ mistakes its own instrumentation of std::optional for uninitialised reads; the plain builds keep the warning.
    target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(${target} PUBLIC -fsanitize=${LUMO_SANITIZE})
  endif()
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
endfunction()

# lumo_install_library(<target> <headers>...): installs the library, exports it, and its headers under their own paths.
# With the tests, every one of these headers is also compiled alone.
function(lumo_install_library target)
  target_sources(${target} PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${ARGN})
  install(TARGETS ${target} EXPORT ${target}Targets
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endfunction()
