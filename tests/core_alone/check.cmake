# Runs a program and looks at what it asks the loader for: cmake -DPROGRAM=file -P check.cmake
cmake_minimum_required(VERSION 3.25)

execute_process(COMMAND "${PROGRAM}" RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${PROGRAM}: ${status}")
endif()

execute_process(COMMAND readelf --dynamic --wide "${PROGRAM}"
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
