# Writers: the preset format-name reader over arbitrary file contents.
tov_add_fuzzer(preset_name SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/preset_name_fuzz.cpp)
