# The property-list reader, fed arbitrary bytes.
tov_add_fuzzer(proplist SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/proplist_fuzz.cpp)
