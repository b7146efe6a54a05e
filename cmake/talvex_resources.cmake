# talvex_resources(NAME FOLDERS folder...) makes a library that holds every file of the folders;
# src/host/resources.h declares its one function. The list of files is a file too, rewritten only when it
# changes, so that adding or removing one makes the library anew.
function(talvex_resources target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FOLDERS")
  set(patterns)
  foreach(folder IN LISTS arg_FOLDERS)
    list(APPEND patterns "${PROJECT_SOURCE_DIR}/${folder}/*")
  endforeach()
  file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE "${PROJECT_SOURCE_DIR}"
       CONFIGURE_DEPENDS ${patterns})
  list(SORT files)

  set(list_file "${CMAKE_CURRENT_BINARY_DIR}/${target}.txt")
  list(JOIN files "\n" lines)
  file(CONFIGURE OUTPUT "${list_file}" CONTENT "${lines}\n" @ONLY)

  set(script "${PROJECT_SOURCE_DIR}/cmake/embed_files.cmake")
  set(generated "${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp")
  list(TRANSFORM files PREPEND "${PROJECT_SOURCE_DIR}/" OUTPUT_VARIABLE inputs)
  add_custom_command(
    OUTPUT "${generated}"
    COMMAND "${CMAKE_COMMAND}" "-DROOT=${PROJECT_SOURCE_DIR}" "-DLIST=${list_file}" "-DOUTPUT=${generated}"
            -P "${script}"
    DEPENDS "${script}" "${list_file}" ${inputs}
    COMMENT "Embedding the installation files"
    VERBATIM)
  add_library(${target} STATIC "${generated}")
  target_link_libraries(${target} PRIVATE talvex_options)
endfunction()
