# The ABI guard of the shared library (abi/abi.sh): `ctest -L abi` compares
# libtovfoundation.so.0 with the baseline in abi/ and checks that it exports
# the public interface only; `make abi-update` records a new baseline.
if(TOV_BUILD_TESTS AND TOV_PACKAGE_CHECKS)
  add_test(NAME abi_baseline_and_exports
    COMMAND bash ${CMAKE_SOURCE_DIR}/abi/abi.sh check ${CMAKE_BINARY_DIR})
  set_tests_properties(abi_baseline_and_exports PROPERTIES LABELS abi TIMEOUT 300)
endif()
