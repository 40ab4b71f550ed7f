# Tests the Windows build does not run, each with its reason. Every entry
# becomes a ctest test of the same name that prints the reason and reports
# "Skipped"; the suite's own executable leaves it out of its test list.
# docs/windows.md lists them.
#
#   tov_windows_skip(<subsystem> <Suite.Test or Suite.*> "<reason>")

function(tov_windows_skip subsystem test reason)
  set_property(GLOBAL APPEND PROPERTY TOV_WINDOWS_SKIPS_${subsystem} "${test}")
  set_property(GLOBAL PROPERTY TOV_WINDOWS_SKIP_REASON_${test} "${reason}")
endfunction()

# tov_windows_skip_filter(<subsystem> <out-var>): the negative gtest filter of
# the subsystem's skipped tests; also adds the tests that report them.
function(tov_windows_skip_filter subsystem out_var)
  get_property(tests GLOBAL PROPERTY TOV_WINDOWS_SKIPS_${subsystem})
  set(filter "")
  foreach(test IN LISTS tests)
    get_property(reason GLOBAL PROPERTY TOV_WINDOWS_SKIP_REASON_${test})
    string(APPEND filter ":${test}")
    string(REPLACE "*" "_all" name "${test}")
    add_test(NAME ${name} COMMAND sh -c "echo 'skipped on Windows: ${reason}'; exit 77")
    set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77 LABELS ${subsystem})
  endforeach()
  if(filter)
    string(SUBSTRING "${filter}" 1 -1 filter)
    set(filter "-${filter}")
  endif()
  set(${out_var} "${filter}" PARENT_SCOPE)
endfunction()

# --- files ---------------------------------------------------------------------
# --- foundation ----------------------------------------------------------------
# --- streams -------------------------------------------------------------------
# --- text ----------------------------------------------------------------------
# --- time ----------------------------------------------------------------------
# --- writers -------------------------------------------------------------------
