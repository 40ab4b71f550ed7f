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
tov_windows_skip(files PathProcess.ModuleNameStopsAtTheLastDotOfTheName
  "POSIX path: copies /proc/self/exe, which under Wine is the Wine loader")
tov_windows_skip(files TempFileName.NameIsPrefixAndResult
  "Wine: GetTempFileNameW writes the number in lower-case hexadecimal; Windows writes upper case")
tov_windows_skip(files AutoFileName.NameGrowsAfterCollisionWithinOneTick
  "Wine: creating the 3000 files that occupy the next 3 s of tick counts takes longer than 3 s, so no collision happens")
tov_windows_skip(files AutoFileName.TwoProcessesGetDistinctNames
  "POSIX scaffolding: the second process is made with fork")
tov_windows_skip(files AutoFileName.UncreatableFileThrowsUnableToCreateFile
  "POSIX permissions: chmod 0500 does not make a Windows folder read-only")
tov_windows_skip(files TempFolder.ComesFromTmpdirWithTrailingBackslash
  "POSIX rule: the temporary folder comes from TMPDIR; GetTempPathW reads TMP and TEMP")
tov_windows_skip(files TempFolder.DefaultsToSlashTmp
  "POSIX rule: /tmp is the POSIX default; GetTempPathW has its own")
tov_windows_skip(files TempFolder.MissingFolderThrows
  "POSIX rule: sets TMPDIR, which GetTempPathW does not read")
tov_windows_skip(files TempFileName.CreatesUnderscoreTOFileInTempFolder
  "POSIX rule: points TMPDIR at the test folder, which GetTempPathW does not read")
tov_windows_skip(files FileOperations.CopyExReportsProgressPerChunk
  "POSIX backend: checks its own copy loop (1 MiB chunks, null handles); CopyFileExW reports its own chunks and real handles")
tov_windows_skip(files FileOperations.CopyExCancelDeletesPartialTarget
  "POSIX backend: relies on the POSIX copy loop's chunking; CopyFileExW copies a small file in one chunk")
tov_windows_skip(files FileOperations.CopyExStopKeepsPartialTarget
  "POSIX backend: relies on the POSIX copy loop's chunking; CopyFileExW copies a small file in one chunk")
tov_windows_skip(files FileOperations.CopyExQuietStopsTheCalls
  "POSIX backend: relies on the POSIX copy loop's chunking; CopyFileExW copies a small file in one chunk")
tov_windows_skip(files Trash.*
  "POSIX backend: checks the freedesktop.org trash layout; SHFileOperationW uses the Recycle Bin (under Wine, the host's trash)")
tov_windows_skip(files PathQueries.WideExistsOnDiskTestsThePathReducedToNarrow
  "POSIX rule: the narrow code page is UTF-8 there; on Windows it is the ANSI code page")
tov_windows_skip(files PathProcess.ToPlatformPathGivesPosixSpelling
  "POSIX rule: checks the POSIX spelling of paths")
tov_windows_skip(files NarrowFolder.StaticQueries
  "POSIX paths: builds a narrow path from a native one with forward slashes that the narrow folder calls do not take on Windows")
tov_windows_skip(files FileSpec.ModificationTimeIsUtc
  "test scaffolding: sets the file time with utimensat, which the Windows runtime sets to the second only")
tov_windows_skip(files PreferencesFolder.HomeDriveFollowedByHomePath
  "POSIX rule: makes C:\\Users\\ed relative by changing the current directory; on Windows C: is a drive")
# --- foundation ----------------------------------------------------------------
tov_windows_skip(foundation PropListFile.UnreadableFileCannotBeOpened
  "POSIX permissions: chmod 0 does not take read access away on Windows")
tov_windows_skip(foundation PropListFile.FullDiskOnSaveLeavesPreviousListIntact
  "POSIX scaffolding: fork and a file-size limit (setrlimit)")
tov_windows_skip(foundation PropListFile.SaveKilledMidwayLeavesACompleteList
  "POSIX scaffolding: fork and kill")
tov_windows_skip(foundation PropListFile.PythonPlistlibReadsTheSameKeysAndValues
  "host tool: runs /usr/bin/python3, which a Windows process cannot start")
tov_windows_skip(foundation RegistrarRestart.SecondProcessFindsFirstProcessAssignmentsAndPlistlibAgrees
  "host tool: runs /usr/bin/python3, which a Windows process cannot start")
tov_windows_skip(foundation SharedRegistrar.FourRegistrarsAndTwoLookersLoseNothing
  "Wine: the test's child processes, started with _spawnve on the test program, fail with 'could not exec the wine loader' (observed), so the parent waits for ever")
tov_windows_skip(foundation SharedRegistrar.SamePairFromTwoProcessesAtOnceGetsOneFile
  "Wine: the test's child processes, started with _spawnve on the test program, fail with 'could not exec the wine loader' (observed), so the parent waits for ever")
tov_windows_skip(foundation TOVLoadResource.ModuleWithoutPiplGivesNull
  "POSIX path: loads /proc/self/exe")
tov_windows_skip(foundation ModuleLayer.DataFileHandlesAreTaggedAndFreedOnce
  "POSIX backend: checks its own data-file handle bookkeeping; Wine answers a second FreeLibrary of a data-file handle with 193")
# --- platform ------------------------------------------------------------------
tov_windows_skip(platform FileCalls.ReadOnlyHandleRefusesToChangeTheSize
  "Wine: setting the end of file on a handle without write access fails with 87 where Windows gives 5")
# --- text ----------------------------------------------------------------------
tov_windows_skip(text StringUtilsConversions.PlatformStringIsUtf8OnPosix
  "POSIX rule: the platform code page is UTF-8 there; on Windows it is the ANSI code page")
# --- time ----------------------------------------------------------------------
tov_windows_skip(time TimecodeExhaustive.*
  "Wine: runs longer than the 600 s limit (observed); every Timecode step sends a trace line to OutputDebugStringA, which Wine implements by raising an exception")
tov_windows_skip(time TraceDebugOutput.TovTraceSendsLinesToStderr
  "POSIX backend: TOV_TRACE and stderr; Windows sends trace lines to OutputDebugStringA")
tov_windows_skip(time LegacyTime.TimeStringUsesTheEnvironmentLocaleTimeFormat
  "POSIX rule: the locale comes from LANG/LC_ALL; GetTimeFormatW uses the system locale")
tov_windows_skip(time LegacyTime.TimeStringFallsBackToCForAnUninstalledLocale
  "POSIX rule: the locale comes from LANG/LC_ALL; GetTimeFormatW uses the system locale")
tov_windows_skip(time LegacyTime.TimeStringIsLocalTimeWhileSystemTimeIsUtc
  "POSIX rule: the time zone comes from TZ; Windows takes it from the system")
# --- writers -------------------------------------------------------------------
tov_windows_skip(writers PresetInMemory.MissingTemporaryFolderIsCreated
  "POSIX rule: points TMPDIR at the test folder, which GetTempPathW does not read")
tov_windows_skip(writers PresetInMemory.TemporaryFolderThatCannotBeMadeIsCreateFailed
  "POSIX rule: points TMPDIR at the test folder, which GetTempPathW does not read")
tov_windows_skip(writers FormatName.ReadErrorIsCreateFailed
  "Windows runtime (msvcrt under Wine): fread on a write-only stream ends without setting the error flag")
