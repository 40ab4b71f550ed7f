# Read-stream operations over random RAM-port bytes.
tov_add_fuzzer(read_stream SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/read_stream_fuzz.cpp)
