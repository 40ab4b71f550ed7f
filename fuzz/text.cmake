# Text fuzz targets: Base64 decoding of any UTF-16 text, the placeholder
# replacement core with random templates and argument texts, and the vector
# kernels of the UTF conversions and of Base64 against the scalar ones.
tov_add_fuzzer(base64_decode SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/base64_decode_fuzz.cpp)
tov_add_fuzzer(replace SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/replace_fuzz.cpp)
tov_add_fuzzer(text_levels SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/text_levels_fuzz.cpp)
tov_add_fuzzer(base64_levels SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/base64_levels_fuzz.cpp)
