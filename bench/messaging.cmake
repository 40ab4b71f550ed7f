# Messaging benchmarks: broadcast delivery against Boost.Signals2 (header-only,
# Debian libboost-dev) and station lookup in a large registry.
find_package(Boost 1.74 REQUIRED)
tov_add_benchmark(messaging SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/messaging_bench.cpp
                  LIBS Boost::headers)
