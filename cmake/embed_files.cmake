# Writes a C++ source whose InstallationFiles() holds files byte for byte.
#   cmake -DROOT=folder -DLIST=file -DOUTPUT=source.cpp -P embed_files.cmake
# LIST names the files, one a line, relative to ROOT and with "/" between folders.
cmake_minimum_required(VERSION 3.25)
file(STRINGS "${LIST}" paths)

# Every byte is written as an escape, which is safe for any content and which compilers read far quicker than
# a list of numbers. The pattern below cuts the escapes (four characters each) into lines of 24.
string(REPEAT "." 96 row)

set(entries "")
set(count 0)
foreach(path IN LISTS paths)
  if(NOT path MATCHES "^[A-Za-z0-9_./ -]+$")
    message(FATAL_ERROR "Letters, digits, blanks and _ . - only in an installation file's name: ${path}")
  endif()
  file(SIZE "${ROOT}/${path}" size)
  file(READ "${ROOT}/${path}" bytes HEX)
  string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${bytes}")
  string(REGEX REPLACE "(${row})" "\\1\"\n     \"" bytes "${bytes}")
  string(APPEND entries "    {\"${path}\",\n     {\"${bytes}\", ${size}}},\n")
  math(EXPR count "${count} + 1")
endforeach()

if(count EQUAL 0)
  set(body "std::span<const Resource> InstallationFiles() { return {}; }")
else()
  set(body "namespace {
constexpr std::array<Resource, ${count}> kFiles{{
${entries}}};
}  // namespace

std::span<const Resource> InstallationFiles() { return kFiles; }")
endif()

file(WRITE "${OUTPUT}" "// Made from the installation files by cmake/embed_files.cmake; edit those instead.
#include \"host/resources.h\"

#include <array>

namespace talvex::host {

${body}

}  // namespace talvex::host
")
