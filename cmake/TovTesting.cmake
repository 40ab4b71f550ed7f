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

# tov_add_test_suite(<subsystem> [LIBS ...]): builds tests/<subsystem>/*_test.cpp
# into tovtests_<subsystem>, linked with the static library (so tests can reach
# internal functions) and gmock_main.
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
  # The scaffolding every suite shares (temporary folders).
  file(GLOB common_sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/common/*.cpp)
  list(APPEND sources ${common_sources})
  set(target tovtests_${subsystem})
  add_executable(${target} ${sources})
  tov_set_warnings(${target})
  target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
  set(test_source_dir "${CMAKE_SOURCE_DIR}/tests")
  set(test_binary_dir "${CMAKE_BINARY_DIR}")
  set(filter_args)
  if(WIN32)
    if(CMAKE_CROSSCOMPILING)
      # Under Wine the host's root is drive Z:, so the trees keep their paths.
      set(test_source_dir "Z:${test_source_dir}")
      set(test_binary_dir "Z:${test_binary_dir}")
    endif()
    # The tests' own POSIX scaffolding (temporary folders, environment, child
    # processes, thread locales) over the Windows runtime.
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests/windows/compat)
    target_compile_options(${target} PRIVATE
      -include ${CMAKE_SOURCE_DIR}/tests/windows/compat/posix_compat.h)
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
  target_link_libraries(${target} PRIVATE tovfoundation_static GTest::gmock GTest::gmock_main
                                          ${ARG_LIBS})
  gtest_discover_tests(${target}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    ${filter_args}
    PROPERTIES LABELS ${subsystem})
endfunction()
