# Warnings and sanitizers shared by every target of the project.
include(GNUInstallDirs)

function(tov_set_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
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
