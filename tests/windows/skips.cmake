# Tests the Windows build does not run under Wine, each with the reason and
# what Wine was seen to do. Only deviations of Wine from Windows belong here:
# tests of POSIX rules live in *_posix_test.cpp files, which the Windows build
# does not compile. Every entry becomes a ctest test of the same name that
# prints the reason and reports "Skipped"; the suite's own executable leaves
# it out of its test list. docs/windows.md lists them.
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
    add_test(NAME ${name} COMMAND sh -c "echo \"skipped on Windows: $0\"; exit 77" "${reason}")
    set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77 LABELS ${subsystem})
  endforeach()
  if(filter)
    string(SUBSTRING "${filter}" 1 -1 filter)
    set(filter "-${filter}")
  endif()
  set(${out_var} "${filter}" PARENT_SCOPE)
endfunction()

# --- files ---------------------------------------------------------------------
tov_windows_skip(files TempFileName.NameIsPrefixAndResult
  "Wine: GetTempFileNameW writes the number in lower-case hexadecimal; Windows writes upper case")
tov_windows_skip(files AutoFileName.NameGrowsAfterCollisionWithinOneTick
  "Wine: creating the 3000 files that occupy the next 3 s of tick counts takes longer than 3 s, so no collision happens")
# --- platform ------------------------------------------------------------------
tov_windows_skip(platform FileCalls.ReadOnlyHandleRefusesToChangeTheSize
  "Wine: setting the end of file on a handle without write access fails with 87 where Windows gives 5")
# --- time ----------------------------------------------------------------------
tov_windows_skip(time TimecodeExhaustive.*
  "Wine: runs longer than the 600 s limit (observed); every Timecode step sends a trace line to OutputDebugStringA, which Wine implements by raising an exception")
# --- writers -------------------------------------------------------------------
tov_windows_skip(writers FormatName.ReadErrorIsCreateFailed
  "Wine's msvcrt: fread on a write-only stream ends without setting the error flag")
