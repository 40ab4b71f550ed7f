# Folder registrar: registrations (each one rewrites the list file) and
# look-ups; loading a large list, against pugixml into a hash map.
# The first-use peer parses the list with pugixml, as the library does.
tov_add_benchmark(foundation SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/foundation_bench.cpp
                  LIBS pugixml::pugixml)
