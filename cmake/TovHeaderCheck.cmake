# Every public header compiles on its own: one translation unit per header
# includes it first (twice, so a missing #pragma once shows too), with the
# project's warnings. The object library is part of the default build when
# the tests are built, so a header that leans on an include it does not make
# fails the build.
file(GLOB_RECURSE TOV_PUBLIC_HEADERS CONFIGURE_DEPENDS
  RELATIVE ${CMAKE_SOURCE_DIR}/include
  ${CMAKE_SOURCE_DIR}/include/tovfoundation/*.h ${CMAKE_SOURCE_DIR}/include/basalt/*.h)
list(SORT TOV_PUBLIC_HEADERS)
set(TOV_HEADER_CHECK_SOURCES)
foreach(header IN LISTS TOV_PUBLIC_HEADERS)
  string(REGEX REPLACE "[/.]" "_" stem ${header})
  set(source ${CMAKE_BINARY_DIR}/header-check/${stem}.cpp)
  set(text "#include \"${header}\"\n#include \"${header}\"\n")
  if(EXISTS ${source})
    file(READ ${source} old_text)
  else()
    set(old_text "")
  endif()
  if(NOT old_text STREQUAL text)
    file(WRITE ${source} "${text}")
  endif()
  list(APPEND TOV_HEADER_CHECK_SOURCES ${source})
endforeach()
add_library(tovheaders_selfcontained OBJECT ${TOV_HEADER_CHECK_SOURCES})
target_include_directories(tovheaders_selfcontained PRIVATE ${CMAKE_SOURCE_DIR}/include)
tov_set_warnings(tovheaders_selfcontained)
