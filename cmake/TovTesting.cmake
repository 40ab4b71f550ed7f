# GoogleTest suites: one executable per subsystem, every test labelled with its
# subsystem so `ctest -L text` runs one of them.
if(CMAKE_CROSSCOMPILING)
  # The host's GoogleTest libraries are built for the host: build the target's
  # from the sources Debian ships in /usr/src/googletest (package googletest).
  set(TOV_GOOGLETEST_SOURCE_DIR /usr/src/googletest CACHE PATH "GoogleTest sources for the target")
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
  add_subdirectory(${TOV_GOOGLETEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/_deps/googletest EXCLUDE_FROM_ALL)
else()
  find_package(GTest CONFIG QUIET)
  if(NOT GTest_FOUND)
    find_package(GTest REQUIRED)
  endif()
endif()
include(GoogleTest)
if(WIN32)
  # Tests that cannot run on the Windows build, each with its reason.
  include(${CMAKE_SOURCE_DIR}/tests/windows/skips.cmake)
endif()

# tov_test_tree_paths(<source-var> <binary-var>): the source tree's tests/
# folder and the build tree as the test programs see them. Under Wine the
# host's root is drive Z:, so the trees keep their paths.
function(tov_test_tree_paths source_var binary_var)
  set(source "${CMAKE_SOURCE_DIR}/tests")
  set(binary "${CMAKE_BINARY_DIR}")
  if(WIN32 AND CMAKE_CROSSCOMPILING)
    set(source "Z:${source}")
    set(binary "Z:${binary}")
  endif()
  set(${source_var} "${source}" PARENT_SCOPE)
  set(${binary_var} "${binary}" PARENT_SCOPE)
endfunction()

# tov_add_test_common(): the scaffolding every suite shares (tests/common:
# temporary folders, files, environment, child processes, file times), built
# once as the static library tovtest_common. Its OS-specific parts are
# *_posix.cpp and *_win32.cpp files, of which the build takes its system's.
function(tov_add_test_common)
  if(TARGET tovtest_common)
    return()
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/common/*.cpp)
  if(WIN32)
    list(FILTER sources EXCLUDE REGEX "_posix\\.cpp$")
  else()
    list(FILTER sources EXCLUDE REGEX "_win32\\.cpp$")
  endif()
  add_library(tovtest_common STATIC ${sources})
  tov_set_warnings(tovtest_common)
  tov_test_tree_paths(test_source_dir test_binary_dir)
  target_include_directories(tovtest_common PUBLIC ${CMAKE_SOURCE_DIR}/tests)
  target_compile_definitions(tovtest_common PRIVATE TOV_TEST_BINARY_DIR="${test_binary_dir}")
  target_link_libraries(tovtest_common PUBLIC tovfoundation_static)
endfunction()

# tov_add_test_suite(<subsystem> [LIBS ...]): builds tests/<subsystem>/*_test.cpp
# into tovtests_<subsystem>, linked with the shared scaffolding (tovtest_common),
# the static library (so tests can reach internal functions) and gmock_main.
function(tov_add_test_suite subsystem)
  cmake_parse_arguments(ARG "" "" "LIBS" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*_test.cpp
                                      ${CMAKE_CURRENT_SOURCE_DIR}/*_support.cpp)
  # Tests of one OS backend are named *_posix_test.cpp or *_win32_test.cpp.
  if(WIN32)
    list(FILTER sources EXCLUDE REGEX "_posix_test\\.cpp$")
  else()
    list(FILTER sources EXCLUDE REGEX "_win32_test\\.cpp$")
  endif()
  if(NOT sources)
    return()
  endif()
  set(target tovtests_${subsystem})
  add_executable(${target} ${sources})
  tov_set_warnings(${target})
  target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  tov_test_tree_paths(test_source_dir test_binary_dir)
  set(filter_args)
  if(WIN32)
    tov_windows_skip_filter(${subsystem} filter)
    # Relinked when the skip list changes, so its test list is discovered anew.
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS
      ${CMAKE_SOURCE_DIR}/tests/windows/skips.cmake)
    if(filter)
      set(filter_args TEST_FILTER ${filter})
    endif()
  endif()
  target_compile_definitions(${target} PRIVATE
    TOV_TEST_SOURCE_DIR="${test_source_dir}"
    TOV_TEST_BINARY_DIR="${test_binary_dir}")
  tov_add_test_common()
  target_link_libraries(${target} PRIVATE tovtest_common tovfoundation_static GTest::gmock
                                          GTest::gmock_main ${ARG_LIBS})
  gtest_discover_tests(${target}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    ${filter_args}
    PROPERTIES LABELS ${subsystem})
endfunction()
