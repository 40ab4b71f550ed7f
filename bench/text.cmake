# Text benchmarks: Base64 against OpenSSL's EVP_EncodeBlock/EVP_DecodeBlock
# (Debian libssl-dev), UTF-8/UTF-16 conversion against glibc's iconv.
find_package(OpenSSL REQUIRED COMPONENTS Crypto)
tov_add_benchmark(text SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/text_bench.cpp LIBS OpenSSL::Crypto)
