# tov_debian_source(<package> <out-var>): the unpacked Debian source package
# <package>, fetched with `apt-get source` into the build tree.
#
# Used when cross-compiling, where the host's -dev packages are no use: the
# target's copy of a third-party library is built from the very sources Debian
# ships. apt runs with a source list, state and cache of its own under
# <build>/_deps/apt, so the machine's apt configuration is neither read for
# sources nor changed; the archive's keyring checks the downloaded index as
# usual. Needs dpkg-dev (dpkg-source) and network access to the Debian
# archive, once: an unpacked tree is reused on every later configure.
#
# TOV_DEBIAN_MIRROR and TOV_DEBIAN_SUITE choose the archive (default: the
# host's release on deb.debian.org); TOV_<PACKAGE>_SOURCE_DIR skips the fetch
# and uses an unpacked tree given by hand.
set(TOV_DEBIAN_MIRROR "http://deb.debian.org/debian" CACHE STRING
    "Debian archive the target's third-party sources come from")
set(TOV_DEBIAN_KEYRING "/usr/share/keyrings/debian-archive-keyring.gpg" CACHE FILEPATH
    "Keyring that signs the Debian archive")
if(NOT TOV_DEBIAN_SUITE)
  set(suite "")
  if(EXISTS /etc/os-release)
    file(STRINGS /etc/os-release codename_line REGEX "^VERSION_CODENAME=")
    string(REGEX REPLACE "^VERSION_CODENAME=\"?([a-z]*)\"?$" "\\1" suite "${codename_line}")
  endif()
  if(NOT suite)
    set(suite bookworm)
  endif()
  set(TOV_DEBIAN_SUITE "${suite}" CACHE STRING "Debian release the sources come from")
endif()

function(tov_debian_source package out_var)
  string(TOUPPER "${package}" upper)
  if(TOV_${upper}_SOURCE_DIR)
    set(${out_var} "${TOV_${upper}_SOURCE_DIR}" PARENT_SCOPE)
    return()
  endif()

  set(deps ${CMAKE_BINARY_DIR}/_deps)
  set(unpack_dir ${deps}/src/${package})
  file(GLOB unpacked LIST_DIRECTORIES true ${unpack_dir}/${package}-*)
  list(FILTER unpacked EXCLUDE REGEX "\\.(dsc|tar\\..*)$")
  if(NOT unpacked)
    find_program(TOV_APT_GET apt-get REQUIRED)
    find_program(TOV_DPKG_SOURCE dpkg-source)
    if(NOT TOV_DPKG_SOURCE)
      message(FATAL_ERROR "dpkg-source not found: install dpkg-dev "
                          "(scripts/install-deps --windows does)")
    endif()
    set(apt ${deps}/apt)
    file(MAKE_DIRECTORY ${apt}/sources.list.d ${apt}/preferences.d
         ${apt}/state/lists/partial ${apt}/cache/archives/partial ${unpack_dir})
    file(WRITE ${apt}/sources.list
         "deb-src [signed-by=${TOV_DEBIAN_KEYRING}] ${TOV_DEBIAN_MIRROR} ${TOV_DEBIAN_SUITE} main\n")
    set(apt_options
      -o Dir::Etc::SourceList=${apt}/sources.list
      -o Dir::Etc::SourceParts=${apt}/sources.list.d
      -o Dir::Etc::PreferencesParts=${apt}/preferences.d
      -o Dir::State=${apt}/state
      -o Dir::Cache=${apt}/cache
      -o Debug::NoLocking=1
      -o Acquire::Languages=none)
    # apt drops privileges to its sandbox user when it runs as root; that user
    # cannot write into the build tree.
    execute_process(COMMAND id -u OUTPUT_VARIABLE uid OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(uid STREQUAL "0")
      list(APPEND apt_options -o APT::Sandbox::User=root)
    endif()
    message(STATUS "Fetching the Debian source of ${package} (${TOV_DEBIAN_SUITE})")
    execute_process(COMMAND ${TOV_APT_GET} ${apt_options} -qq update
      RESULT_VARIABLE rc ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
      message(FATAL_ERROR "apt-get update (private source list ${apt}/sources.list) failed:\n${err}")
    endif()
    execute_process(COMMAND ${TOV_APT_GET} ${apt_options} -qq source ${package}
      WORKING_DIRECTORY ${unpack_dir}
      RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
      message(FATAL_ERROR "apt-get source ${package} failed:\n${out}\n${err}")
    endif()
    file(GLOB unpacked LIST_DIRECTORIES true ${unpack_dir}/${package}-*)
    list(FILTER unpacked EXCLUDE REGEX "\\.(dsc|tar\\..*)$")
    if(NOT unpacked)
      message(FATAL_ERROR "apt-get source ${package} left no source tree in ${unpack_dir}")
    endif()
  endif()
  list(SORT unpacked)
  list(GET unpacked -1 tree)
  set(${out_var} ${tree} PARENT_SCOPE)
endfunction()
