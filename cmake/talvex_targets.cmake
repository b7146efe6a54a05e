# Targets made from folders under src/. A folder without sources makes no target, so that rooms can be added
# and taken away without a word here; the folders are looked at again on every build.

# The standard headers that most sources read. One target compiles them, the others reuse the result.
set(TALVEX_STANDARD_HEADERS
  <algorithm> <array> <chrono> <cstdint> <functional> <map> <memory> <optional> <span> <stdexcept> <string>
  <string_view> <unordered_map> <utility> <variant> <vector>)

function(talvex_sources result)
  set(patterns)
  foreach(folder IN LISTS ARGN)
    list(APPEND patterns "${PROJECT_SOURCE_DIR}/src/${folder}/*.cpp")
  endforeach()
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${patterns})
  set(${result} ${sources} PARENT_SCOPE)
endfunction()

# Links those of the named targets that exist: a room not yet filled has none.
function(talvex_link target)
  foreach(library IN LISTS ARGN)
    if(TARGET ${library})
      target_link_libraries(${target} PUBLIC ${library})
    endif()
  endforeach()
endfunction()

function(talvex_precompile target)
  if(target STREQUAL "talvex_core")
    target_precompile_headers(talvex_core PRIVATE ${TALVEX_STANDARD_HEADERS})
  elseif(TARGET talvex_core)
    target_precompile_headers(${target} REUSE_FROM talvex_core)
  endif()
endfunction()

# talvex_library(NAME FOLDERS folder... LINK target...)
function(talvex_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "FOLDERS;LINK")
  talvex_sources(sources ${arg_FOLDERS})
  if(NOT sources)
    return()
  endif()
  add_library(${target} STATIC ${sources})
  target_link_libraries(${target} PUBLIC talvex_options)
  talvex_link(${target} ${arg_LINK})
  talvex_precompile(${target})
endfunction()

# talvex_adapter(NAME PACKAGE package... LINK target...) makes talvex_adapter_NAME from src/adapters/NAME. The
# packages are looked for only when the adapter has sources; their headers stay inside the adapter.
macro(talvex_adapter name)
  cmake_parse_arguments(adapter "" "" "PACKAGE;LINK" ${ARGN})
  talvex_library(talvex_adapter_${name} FOLDERS adapters/${name} LINK talvex_core)
  if(TARGET talvex_adapter_${name})
    list(APPEND TALVEX_ADAPTERS talvex_adapter_${name})
    foreach(adapter_package IN LISTS adapter_PACKAGE)
      find_package(${adapter_package} REQUIRED)
    endforeach()
    target_link_libraries(talvex_adapter_${name} PRIVATE ${adapter_LINK})
  endif()
endmacro()

# talvex_program(NAME FOLDERS folder... LINK target... PACKAGES package... LINK_PACKAGES target...)
macro(talvex_program target)
  cmake_parse_arguments(program "" "" "FOLDERS;LINK;PACKAGES;LINK_PACKAGES" ${ARGN})
  talvex_sources(program_sources ${program_FOLDERS})
  if(program_sources)
    foreach(program_package IN LISTS program_PACKAGES)
      find_package(${program_package} REQUIRED)
    endforeach()
    add_executable(${target} ${program_sources})
    target_link_libraries(${target} PRIVATE talvex_options ${program_LINK_PACKAGES})
    foreach(program_library IN LISTS program_LINK)
      if(TARGET ${program_library})
        target_link_libraries(${target} PRIVATE ${program_library})
      endif()
    endforeach()
    talvex_precompile(${target})
  endif()
endmacro()
