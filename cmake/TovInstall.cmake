# cmake --install: headers, the shared library, a CMake package and a
# pkg-config file. The install components are the Debian packages
# (TovPackaging.cmake): runtime holds the shared library, dev everything one
# builds against it (headers, libtovfoundation.so link, CMake and pkg-config).
include(CMakePackageConfigHelpers)

install(TARGETS tovfoundation EXPORT tovfoundationTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
# The header folders are installed whole, per-concept subfolders
# (tovfoundation/files/, tovfoundation/streams/) included.
install(DIRECTORY ${CMAKE_SOURCE_DIR}/include/tovfoundation ${CMAKE_SOURCE_DIR}/include/basalt
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT dev)
install(EXPORT tovfoundationTargets NAMESPACE tovfoundation::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tovfoundation COMPONENT dev)

configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/tovfoundationConfig.cmake.in
  ${CMAKE_BINARY_DIR}/tovfoundationConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tovfoundation)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/tovfoundationConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/tovfoundationConfig.cmake
              ${CMAKE_BINARY_DIR}/tovfoundationConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/tovfoundation COMPONENT dev)

# The pkg-config file finds its prefix relative to itself, so a relocated
# install (cmake --install --prefix) stays consistent.
file(RELATIVE_PATH TOV_PC_TO_PREFIX /root/${CMAKE_INSTALL_LIBDIR}/pkgconfig /root)
configure_file(${CMAKE_SOURCE_DIR}/cmake/tovfoundation.pc.in
  ${CMAKE_BINARY_DIR}/tovfoundation.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/tovfoundation.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
