# Third-party libraries. pugixml stays private to the library: no public header
# includes it, and consumers never link it themselves.
find_package(Threads REQUIRED)
find_package(pugixml CONFIG QUIET)
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
