# Benchmark of the files subsystem: recursive filtered listing against find(1).
tov_add_benchmark(files SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/files_bench.cpp)
