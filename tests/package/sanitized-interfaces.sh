#!/usr/bin/env bash
# The host-side interface implementations (tests/consumer/interfaces.cpp)
# against this build's library installed into a prefix, in a sanitized build:
# the library checks the host's objects it calls (UBSan's vptr check in the
# library) and the host checks the library's.
#
#   sanitized-interfaces.sh BUILD_DIR SOURCE_DIR WORK_DIR CXX_COMPILER SANITIZE_FLAGS
set -euo pipefail

build=$1
source_dir=$2
work=$3
cxx=$4
flags=$5

rm -rf "$work"
mkdir -p "$work/tmp"
export TMPDIR=$work/tmp
for component in runtime dev; do
  cmake --install "$build" --prefix "$work/prefix" --component "$component" >/dev/null
done
# The library needs its sanitizer runtimes loaded first: the host links them too.
cmake -S "$source_dir/tests/consumer" -B "$work/consumer" -G Ninja -DCMAKE_CXX_COMPILER="$cxx" \
  -DCMAKE_PREFIX_PATH="$work/prefix" -DTOV_CONSUMER_UBSAN=ON -DCMAKE_CXX_FLAGS="$flags" \
  -DCMAKE_EXE_LINKER_FLAGS="$flags" >"$work/configure.log"
cmake --build "$work/consumer" >"$work/build.log"
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1
"$work/consumer/interfaces"
