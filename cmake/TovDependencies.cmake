# Third-party libraries. pugixml stays private to the library: no public header
# includes it, and consumers never link it themselves.
find_package(Threads REQUIRED)
if(CMAKE_CROSSCOMPILING)
  # The host's pugixml is built for the host: build the target's from the
  # Debian source package instead, as a static library inside this build.
  include(TovDebianSource)
  tov_debian_source(pugixml TOV_PUGIXML_TREE)
  add_library(tov_pugixml STATIC ${TOV_PUGIXML_TREE}/src/pugixml.cpp)
  target_include_directories(tov_pugixml SYSTEM PUBLIC ${TOV_PUGIXML_TREE}/src)
  add_library(pugixml::pugixml ALIAS tov_pugixml)
  set(pugixml_FOUND TRUE)
else()
  find_package(pugixml CONFIG QUIET)
endif()
if(NOT pugixml_FOUND)
  find_path(PUGIXML_INCLUDE_DIR pugixml.hpp REQUIRED)
  find_library(PUGIXML_LIBRARY pugixml REQUIRED)
  add_library(pugixml::pugixml UNKNOWN IMPORTED)
  set_target_properties(pugixml::pugixml PROPERTIES
    IMPORTED_LOCATION ${PUGIXML_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${PUGIXML_INCLUDE_DIR})
endif()
if(NOT TARGET pugixml::pugixml AND TARGET pugixml)
  add_library(pugixml::pugixml ALIAS pugixml)
endif()

set(TOV_PRIVATE_LIBS pugixml::pugixml Threads::Threads ${CMAKE_DL_LIBS})
if(WIN32)
  # The Win32 backend's shell (SHCreateDirectoryExW, SHFileOperationW) and COM
  # (CoCreateGuid) calls.
  list(APPEND TOV_PRIVATE_LIBS shell32 ole32)
endif()
