# Writers: PCMFileWriter against libsndfile writing the same WAVE bytes.
find_package(PkgConfig REQUIRED)
pkg_check_modules(SNDFILE REQUIRED IMPORTED_TARGET sndfile)
tov_add_benchmark(writers SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/writers_bench.cpp
                  LIBS PkgConfig::SNDFILE)
