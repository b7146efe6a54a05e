# Builds the project beside this file and looks at what the result asks the loader for.
#   cmake -DCOMPILER=g++ -DBUILD_DIR=folder -P check.cmake
cmake_minimum_required(VERSION 3.25)

function(run_or_fail)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "${command}: ${status}")
  endif()
endfunction()

run_or_fail("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_LIST_DIR}" -B "${BUILD_DIR}" -G Ninja
            "-DCMAKE_CXX_COMPILER=${COMPILER}")
run_or_fail("${CMAKE_COMMAND}" --build "${BUILD_DIR}" --parallel 2)
run_or_fail("${BUILD_DIR}/core_alone")

execute_process(COMMAND readelf --dynamic --wide "${BUILD_DIR}/core_alone"
                OUTPUT_VARIABLE dynamic RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "readelf: ${status}")
endif()
# A square bracket in an element would glue a list together.
string(REGEX REPLACE "[][]" "|" dynamic "${dynamic}")
string(REGEX MATCHALL "NEEDED[^|]*[|][^|]+" needed "${dynamic}")
list(TRANSFORM needed REPLACE ".*[|]" "")
if(NOT "libstdc++.so.6" IN_LIST needed)
  message(FATAL_ERROR "The list of needed libraries cannot be right: ${needed}")
endif()
# The dynamic loader belongs to the C library; some processors name it for thread-local variables.
set(allowed "^(libstdc\\+\\+|libm|libgcc_s|libc|ld-linux[a-z0-9_-]*)\\.so\\.[0-9]+$")
foreach(library IN LISTS needed)
  if(NOT library MATCHES "${allowed}")
    message(FATAL_ERROR "The component needs ${library}, which is not part of the standard library")
  endif()
endforeach()
message(STATUS "Needs only ${needed}")
