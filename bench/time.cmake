# Time and timecode benchmarks; FFmpeg's libavutil timecode functions are the
# peer for the drop-frame cases.
find_package(PkgConfig REQUIRED)
pkg_check_modules(TOV_AVUTIL REQUIRED IMPORTED_TARGET libavutil)
tov_add_benchmark(time SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/time_bench.cpp
                  LIBS PkgConfig::TOV_AVUTIL)
