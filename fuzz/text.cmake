# Text fuzz targets: Base64 decoding of any UTF-16 text, and the placeholder
# replacement core with random templates and argument texts.
tov_add_fuzzer(base64_decode SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/base64_decode_fuzz.cpp)
tov_add_fuzzer(replace SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/replace_fuzz.cpp)
