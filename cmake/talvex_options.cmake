# talvex_options: how every target of the project is compiled.
add_library(talvex_options INTERFACE)
target_compile_features(talvex_options INTERFACE cxx_std_20)
target_include_directories(talvex_options INTERFACE "${PROJECT_SOURCE_DIR}/src")
target_compile_options(talvex_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 reports "a" + text as an overlapping copy when it optimises (its bug 105651); there is none.
  target_compile_options(talvex_options INTERFACE -Wno-restrict)
endif()

if(TALVEX_INSTRUMENT STREQUAL "sanitizers")
  # Without -O1 the tests take too long. The instrumented code confuses the compiler's flow analysis, so here
  # warnings are not errors: the plain builds judge them.
  set(talvex_flags -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  set(CMAKE_CXX_FLAGS_DEBUG "-O1 -g1")
  target_compile_options(talvex_options INTERFACE ${talvex_flags})
  target_compile_definitions(talvex_options INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(talvex_options INTERFACE ${talvex_flags})
elseif(TALVEX_INSTRUMENT STREQUAL "coverage")
  target_compile_options(talvex_options INTERFACE --coverage -O0)
  target_link_options(talvex_options INTERFACE --coverage)
elseif(TALVEX_INSTRUMENT)
  message(FATAL_ERROR "TALVEX_INSTRUMENT is empty, sanitizers or coverage, not ${TALVEX_INSTRUMENT}")
endif()

if(TALVEX_WERROR AND NOT TALVEX_INSTRUMENT STREQUAL "sanitizers")
  target_compile_options(talvex_options INTERFACE -Werror)
endif()
