# Fuzz target of the files subsystem: the path text operations.
tov_add_fuzzer(paths SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/paths_fuzz.cpp)
