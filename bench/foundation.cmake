# Folder registrar: registrations (each one rewrites the list file) and
# look-ups. No peer library does this work.
tov_add_benchmark(foundation SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/foundation_bench.cpp)
