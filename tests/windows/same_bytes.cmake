# Runs tovtool tone and tovtool bars under Wine and checks that the files are
# byte for byte the ones the Linux build writes with the same options (their
# SHA-256 sums, taken from the Linux build, are listed below).
#   cmake -DWRAPPER=… -DWINE=… -DPREFIX=… -DTOVTOOL=…exe -DWORK=dir -P same_bytes.cmake
cmake_minimum_required(VERSION 3.25)
# Each case: file name|sub-command|options separated by blanks. The first and
# the 320 x 180 bars are the files tovtool demo writes. A 32-bit float tone is
# not among them: its samples come from std::sin of growing arguments, where
# the Windows runtime's sin and glibc's differ in the last bits for a few
# dozen samples near the zero crossings (docs/windows.md).
set(cases
  "tone-default.wav|tone|"
  "tone-24bit-5.1.wav|tone|--bits 24 --mask 0x3F --rate 44100 --seconds 0.2 --frequency 1000"
  "bars-default.bmp|bars|"
  "bars-320x180.bmp|bars|--width 320 --height 180"
  "bars-24bit-odd.bmp|bars|--colour-space 0x20 --width 321 --height 7")
include(${CMAKE_CURRENT_LIST_DIR}/same_bytes_sums.cmake)

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
set(failures "")
foreach(case IN LISTS cases)
  string(REPLACE "|" ";" fields "${case}")
  list(GET fields 0 name)
  list(GET fields 1 command)
  list(GET fields 2 option_text)
  separate_arguments(options UNIX_COMMAND "${option_text}")
  execute_process(COMMAND ${WRAPPER} ${WINE} ${PREFIX} ${TOVTOOL} ${command} Z:${WORK}/${name} ${options}
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    string(APPEND failures "${name}: tovtool ${command} failed (${rc}): ${out}${err}\n")
    continue()
  endif()
  file(SHA256 ${WORK}/${name} sum)
  if(NOT sum STREQUAL "${linux_sha256_${name}}")
    string(APPEND failures "${name}: SHA-256 ${sum}, the Linux build's ${linux_sha256_${name}}\n")
  else()
    message(STATUS "${name}: same bytes as on Linux (${sum})")
  endif()
endforeach()
if(failures)
  message(FATAL_ERROR "${failures}")
endif()
