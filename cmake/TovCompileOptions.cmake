# Warnings and sanitizers shared by every target of the project.
include(GNUInstallDirs)

function(tov_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  # GCC 12 at -O2 reports std::string's operator+ on a literal as an
  # overlapping memcpy (-Wrestrict, a known false positive of that release).
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12
     AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(${target} PRIVATE -Wno-restrict)
  endif()
  if(TOV_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

if(TOV_SANITIZE STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
elseif(TOV_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(NOT TOV_SANITIZE STREQUAL "")
  message(FATAL_ERROR "TOV_SANITIZE must be empty, address or thread")
endif()
