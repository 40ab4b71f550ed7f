# Ports and byte streams against memcpy, raw read(2)/write(2) and the standard
# string and file streams (all from the C and C++ runtimes: no extra package).
tov_add_benchmark(streams SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/streams_bench.cpp)
