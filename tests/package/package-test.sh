#!/usr/bin/env bash
# Installs the three Debian packages of this build into a throwaway root under
# the build tree, builds the consumer project against the installed files
# (find_package and pkg-config), runs the packaged `tovtool demo`, removes the
# packages and checks that they left nothing behind.
#
#   package-test.sh PACKAGE_DIR SOURCE_DIR WORK_DIR CXX_COMPILER
#
# The machine's package database and files are never touched: dpkg works on
# WORK_DIR/root with its own, empty administrative directory. What is forced:
#   --force-not-root           the test need not run as root (harmless as root)
#   --force-depends            libc6, libstdc++6, libpugixml1v5 … are installed
#                              on the machine, not in the empty root's database
#   --force-script-chrootless  the root holds no shell to chroot into, so the
#                              maintainer scripts run outside it; the only ones
#                              (the library's postinst and postrm) do nothing:
#                              the library's ldconfig runs through a trigger,
#                              which nothing in the empty root is interested
#                              in. A stand-in ldconfig first in PATH records
#                              any call, so the test fails instead of
#                              refreshing the machine's linker cache.
set -euo pipefail

package_dir=$1
source_dir=$2
work=$3
cxx=$4

fail() {
  echo "package test: $*" >&2
  exit 1
}

rm -rf "$work"
root=$work/root
admin=$root/var/lib/dpkg
mkdir -p "$admin/info" "$admin/updates" "$admin/triggers" "$work/bin" "$work/tmp"
# The programs' temporary files and folders stay in the work folder.
export TMPDIR=$work/tmp
touch "$admin/status" "$admin/available"

cat >"$work/bin/ldconfig" <<STUB
#!/bin/sh
echo "ldconfig \$*" >>"$work/ldconfig.log"
STUB
chmod +x "$work/bin/ldconfig"
export PATH=$work/bin:$PATH:/usr/sbin:/sbin

dpkg_root=(dpkg --root="$root" --log="$work/dpkg.log" --force-not-root --force-depends
           --force-script-chrootless)

shopt -s nullglob
debs=("$package_dir"/libtovfoundation0_*.deb "$package_dir"/libtovfoundation-dev_*.deb
      "$package_dir"/tovtool_*.deb)
[[ ${#debs[@]} -eq 3 ]] || fail "expected three packages in $package_dir, found: ${debs[*]}"

# --- the control data ---------------------------------------------------------
field() { dpkg-deb --field "$1" "$2"; }
version=$(field "${debs[0]}" Version)
lib_depends=$(field "${debs[0]}" Depends)
for needed in libc6 libstdc++6 libpugixml1v5; do
  [[ "$lib_depends" == *"$needed"* ]] || fail "libtovfoundation0 does not depend on $needed: $lib_depends"
done
[[ "$(field "${debs[1]}" Depends)" == *"libtovfoundation0 (= $version)"* ]] ||
  fail "libtovfoundation-dev does not depend on exactly libtovfoundation0 $version"
[[ "$(field "${debs[2]}" Depends)" == *"libtovfoundation0 (= $version)"* ]] ||
  fail "tovtool does not depend on libtovfoundation0 $version"
[[ "$(dpkg-deb --info "${debs[0]}" triggers)" == "activate-noawait ldconfig" ]] ||
  fail "libtovfoundation0 does not activate the ldconfig trigger"
shlibs=$(dpkg-deb --info "${debs[0]}" shlibs)
[[ "$shlibs" == "libtovfoundation 0 libtovfoundation0 (>= $version)" ]] ||
  fail "unexpected shlibs file: $shlibs"
echo "package test: control data of $version checked"

# --- install --------------------------------------------------------------------
find "$root" | sort >"$work/before.txt"
"${dpkg_root[@]}" --install "${debs[@]}"
for package in libtovfoundation0 libtovfoundation-dev tovtool; do
  status=$(dpkg-query --admindir="$admin" -W -f='${Status}' "$package")
  [[ "$status" == "install ok installed" ]] || fail "$package is '$status' after installation"
done
[[ ! -e "$work/ldconfig.log" ]] || fail "a maintainer script ran ldconfig: $(cat "$work/ldconfig.log")"

multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null || gcc -print-multiarch)
libdir=$root/usr/lib/$multiarch
[[ -f "$root/usr/include/tovfoundation/tovfoundation.h" ]] || fail "headers missing"
[[ -L "$libdir/libtovfoundation.so" ]] || fail "the development link is missing"
[[ -L "$libdir/libtovfoundation.so.0" ]] || fail "the soname link is missing"
for deb in "${debs[@]}"; do
  contents=$(dpkg-deb --contents "$deb")
  [[ "$contents" =~ \./usr/share/doc/[a-z0-9-]+/copyright ]] ||
    fail "$(basename "$deb") carries no copyright file"
done

# --- the consumer, built against the installed files ---------------------------
export LD_LIBRARY_PATH=$libdir
cmake -S "$source_dir/tests/consumer" -B "$work/consumer" -G Ninja \
  -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_PREFIX_PATH="$root/usr" -DCMAKE_FIND_USE_SYSTEM_PACKAGE_REGISTRY=OFF \
  -DCMAKE_FIND_PACKAGE_NO_PACKAGE_REGISTRY=ON -DTOV_CONSUMER_UBSAN=ON >"$work/consumer-configure.log"
grep -q "tovfoundation from $root/usr" "$work/consumer-configure.log" ||
  fail "the consumer did not find the installed package: $(cat "$work/consumer-configure.log")"
cmake --build "$work/consumer" >"$work/consumer-build.log"
libraries=$(ldd "$work/consumer/consumer")
[[ "$libraries" == *"libtovfoundation.so.0 => $libdir/"* ]] ||
  fail "the consumer does not load the installed library: $libraries"
"$work/consumer/consumer"
# The host's implementations of the library's interfaces, under UBSan.
UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 "$work/consumer/interfaces"

export PKG_CONFIG_PATH=$libdir/pkgconfig
export PKG_CONFIG_LIBDIR=$libdir/pkgconfig
pc_flags=$(pkg-config --cflags --libs tovfoundation)
pc_include=$(pkg-config --variable=includedir tovfoundation)
pc_libdir=$(pkg-config --variable=libdir tovfoundation)
[[ "$(realpath "$pc_include")" == "$root/usr/include" && "$(realpath "$pc_libdir")" == "$libdir" ]] ||
  fail "pkg-config does not point into the installed root: $pc_flags"
# shellcheck disable=SC2086 # the flags are words
"$cxx" "$source_dir/tests/consumer/main.cpp" -o "$work/consumer-pc" $pc_flags
"$work/consumer-pc"

# --- the packaged tool ------------------------------------------------------------
(cd "$work" && "$root/usr/bin/tovtool" demo >"$work/demo.log") || fail "tovtool demo failed: $(cat "$work/demo.log")"
echo "package test: tovtool demo printed $(wc -l <"$work/demo.log") lines"

[[ ! -e "$work/ldconfig.log" ]] || fail "a maintainer script ran ldconfig: $(cat "$work/ldconfig.log")"

# --- removal ---------------------------------------------------------------------
"${dpkg_root[@]}" --purge tovtool libtovfoundation-dev libtovfoundation0
for package in libtovfoundation0 libtovfoundation-dev tovtool; do
  if dpkg-query --admindir="$admin" -W -f='${Status}' "$package" 2>/dev/null | grep -q installed; then
    fail "$package is still installed"
  fi
done
find "$root" | sort >"$work/after.txt"
# dpkg keeps its own records (status backups, logs of the removal) in the
# administrative directory; everything else must be as it was.
left=$(comm -13 "$work/before.txt" "$work/after.txt" | grep -v "^$admin/" || true)
[[ -z "$left" ]] || fail "left behind after removal:
$left"
leftinfo=$(find "$admin/info" -name 'libtovfoundation*' -o -name 'tovtool*')
[[ -z "$leftinfo" ]] || fail "dpkg still keeps files of the packages: $leftinfo"
echo "package test: installed, used and removed cleanly"
