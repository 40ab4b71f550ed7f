# The ABI guard of the shared library (abi/abi.sh): `ctest -L abi` compares
# libtovfoundation.so.0 with the baseline in abi/ and checks that it exports
# the public interface only; `make abi-update` records a new baseline.
if(TOV_BUILD_TESTS AND TOV_PACKAGE_CHECKS)
  add_test(NAME abi_baseline_and_exports
    COMMAND bash ${CMAKE_SOURCE_DIR}/abi/abi.sh check ${CMAKE_BINARY_DIR})
  set_tests_properties(abi_baseline_and_exports PROPERTIES LABELS abi TIMEOUT 300)
endif()

# A host implementing the library's interfaces, against the sanitized library
# of the asan preset: UBSan's dynamic type checks run on both sides of the
# boundary (the unsanitized case runs in the package test).
if(TOV_BUILD_TESTS AND TOV_SANITIZE STREQUAL "address" AND NOT CMAKE_CROSSCOMPILING)
  add_test(NAME interfaces_across_boundary_sanitized
    COMMAND bash ${CMAKE_SOURCE_DIR}/tests/package/sanitized-interfaces.sh ${CMAKE_BINARY_DIR}
            ${CMAKE_SOURCE_DIR} ${CMAKE_BINARY_DIR}/interfaces-test ${CMAKE_CXX_COMPILER}
            "-fsanitize=address,undefined")
  set_tests_properties(interfaces_across_boundary_sanitized PROPERTIES LABELS interfaces TIMEOUT 600)
endif()
