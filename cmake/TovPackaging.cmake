# Debian packages with CPack (make package):
#   libtovfoundation0     the shared library (component runtime)
#   libtovfoundation-dev  headers, CMake package, pkg-config file and the
#                         libtovfoundation.so link (component dev)
#   tovtool               the command-line tool (component tool)
# The static library stays a build-tree artefact for the unit tests (it exposes
# the internal headers) and is not shipped.
#
# Built from the package preset (RelWithDebInfo, prefix /usr so that the
# library lands in the multiarch folder): the build tree keeps the debug
# information abidw needs, and CPack strips what goes into the packages.
option(TOV_PACKAGE_CHECKS "Register the package and ABI tests (ctest -L package, -L abi)" OFF)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tovfoundation)
set(CPACK_PACKAGE_VENDOR "tovfoundation maintainers")
set(CPACK_PACKAGE_CONTACT "tovfoundation maintainers <maintainers@users.noreply.c-seed-ae0fc655.example>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_SET_DESTDIR OFF)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tool)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(TOV_DEB_VERSION "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Run-time dependencies come from dpkg-shlibdeps. For tovtool it finds
# libtovfoundation.so.0 in this build's lib folder, which no installed package
# describes: that dependency is given by hand below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

# The library: a shlibs control file lets packages built against it depend on
# this version or later (the ABI check keeps later versions compatible).
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtovfoundation${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# The library's ldconfig runs through the trigger libc-bin declares, so its
# maintainer scripts are ours (they do nothing) rather than CPack's, which
# would call ldconfig themselves.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/cmake/debian/triggers
    ${CMAKE_SOURCE_DIR}/cmake/debian/postinst ${CMAKE_SOURCE_DIR}/cmake/debian/postrm)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "foundation library for media-encoding applications
Tick-based time and timecode, messaging between stations, ports and byte
streams, WAVE and BMP writers, paths, files and folders, host services with a
cache-folder registrar, and text utilities.

This package contains the shared library.")

# The development files need exactly the library of the same build.
set(CPACK_DEBIAN_DEV_PACKAGE_NAME libtovfoundation-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${TOV_DEB_VERSION})")
set(CPACK_DEBIAN_DEV_DESCRIPTION
    "foundation library for media-encoding applications - development files
Headers, the CMake package (find_package(tovfoundation)) and the pkg-config
file of tovfoundation, for building programs against the shared library.")

# tovtool links the shared library.
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME tovtool)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} (= ${TOV_DEB_VERSION})")
set(CPACK_DEBIAN_TOOL_DESCRIPTION
    "command-line tool of the tovfoundation library
Converts timecodes, writes WAVE test tones and BMP colour bars, encodes
Base64, lists and searches folders, gives folders their cache files, and walks
through what the library can do (tovtool demo).")

# Every package carries its copyright file and changelog where Debian policy
# puts them; tovtool its manual page. The changelog's date honours
# SOURCE_DATE_EPOCH, and gzip stores no name or time, so the packages are
# reproducible.
string(TIMESTAMP TOV_DEB_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${CMAKE_SOURCE_DIR}/cmake/debian/changelog.in
  ${CMAKE_BINARY_DIR}/debian/changelog.Debian @ONLY)
file(ARCHIVE_CREATE OUTPUT ${CMAKE_BINARY_DIR}/debian/changelog.Debian.gz
  PATHS ${CMAKE_BINARY_DIR}/debian/changelog.Debian FORMAT raw COMPRESSION GZip
  COMPRESSION_LEVEL 9 MTIME 0)
file(ARCHIVE_CREATE OUTPUT ${CMAKE_BINARY_DIR}/debian/tovtool.1.gz
  PATHS ${CMAKE_SOURCE_DIR}/cmake/debian/tovtool.1 FORMAT raw COMPRESSION GZip
  COMPRESSION_LEVEL 9 MTIME 0)
foreach(component IN ITEMS runtime dev tool)
  string(TOUPPER ${component} upper)
  install(FILES ${CMAKE_SOURCE_DIR}/cmake/debian/copyright
                ${CMAKE_BINARY_DIR}/debian/changelog.Debian.gz
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}
    COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
install(FILES ${CMAKE_BINARY_DIR}/debian/tovtool.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
  COMPONENT tool EXCLUDE_FROM_ALL)

# The per-package descriptions above carry their own synopsis line; CPack would
# put the project's summary in front of each (see cpack-project.cmake).
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_SOURCE_DIR}/cmake/debian/cpack-project.cmake)

include(CPack)

# ctest -L package: builds the packages, then installs them into a throwaway
# root, serves a consumer from it and removes them (tests/package).
if(TOV_BUILD_TESTS AND TOV_PACKAGE_CHECKS)
  add_test(NAME package_build COMMAND ${CMAKE_CPACK_COMMAND} --config ${CMAKE_BINARY_DIR}/CPackConfig.cmake
    WORKING_DIRECTORY ${CMAKE_BINARY_DIR})
  set_tests_properties(package_build PROPERTIES LABELS package FIXTURES_SETUP tov_packages)
  add_test(NAME package_install_use_remove
    COMMAND bash ${CMAKE_SOURCE_DIR}/tests/package/package-test.sh ${CPACK_PACKAGE_DIRECTORY}
            ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR}/package-test ${CMAKE_CXX_COMPILER})
  set_tests_properties(package_install_use_remove PROPERTIES LABELS package
    FIXTURES_REQUIRED tov_packages TIMEOUT 600)
endif()
