# lumo_target(<target>): what every target of this project compiles with. The flags stay private to the target, so
# that a consumer of the installed packages never inherits them.
function(lumo_target target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Werror)
  if(LUMO_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${LUMO_SANITIZE} -fno-sanitize-recover=all
                                             -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=${LUMO_SANITIZE})
  endif()
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
endfunction()

# lumo_install_library(<target> <headers>...): installs the library, exports it, and its headers under their own paths.
function(lumo_install_library target)
  install(TARGETS ${target} EXPORT LumoRTCLibWrapperTargets
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  foreach(header IN LISTS ARGN)
    cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE folder)
    cmake_path(GET header PARENT_PATH subfolder)
    install(FILES ${header} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}/${subfolder}")
  endforeach()
endfunction()
