# Timecode text parsing across every format, style and predefined rate.
tov_add_fuzzer(timecode SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/timecode_fuzz.cpp)
