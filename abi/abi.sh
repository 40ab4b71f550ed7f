#!/usr/bin/env bash
# The ABI guard of libtovfoundation.so.0.
#
#   abi/abi.sh check  BUILD_DIR   compare the built library with the baseline
#   abi/abi.sh update BUILD_DIR   record the built library as the new baseline
#   abi/abi.sh exports BUILD_DIR  only check the exported names
#
# BUILD_DIR holds a build with debug information (the package preset:
# RelWithDebInfo). The baseline, abi/libtovfoundation.abi, is abidw's
# description of the public interface: only the types the headers in include/
# define, no file paths, no source locations, hash type identifiers, so that
# the same library always gives the same file.
#
# check fails when
#   - abidiff finds an incompatible change (a removed or changed function or
#     variable, a changed public type) and the soname is the baseline's: an
#     incompatible change needs a new major version (and then `make
#     abi-update` records the new baseline);
#   - the library exports a name outside the public interface (exports.allow).
# A compatible change (additions only) passes; abidiff's report says what to
# record with `make abi-update`.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
source_dir=$(dirname "$here")
baseline=$here/libtovfoundation.abi
allow=$here/exports.allow

usage() {
  echo "usage: abi/abi.sh check|update|exports BUILD_DIR" >&2
  exit 2
}
[[ $# -eq 2 ]] || usage
mode=$1
build=$2
# The development link leads to the library whatever its soname.
library=$build/lib/libtovfoundation.so
[[ -e "$library" ]] || { echo "abi: no $library: build the package preset first" >&2; exit 2; }
library=$(readlink -f "$library")
sections=$(readelf --section-headers --wide "$library")
if [[ "$sections" != *.debug_info* ]]; then
  echo "abi: $library has no debug information (build it with -g, the package preset)" >&2
  exit 2
fi

describe() {
  abidw --no-corpus-path --no-comp-dir-path --no-show-locs --type-id-style hash \
    --drop-private-types --headers-dir "$source_dir/include" --drop-undefined-syms \
    --out-file "$1" "$library"
}

soname_of() { sed -n "s/^<abi-corpus [^>]*soname='\([^']*\)'.*/\1/p" "$1" | head -n 1; }

check_exports() {
  local allowed=() denied=() weak=() line
  while IFS= read -r line; do
    case "$line" in
      '' | '#'*) ;;
      '!'*) denied+=("${line#!}") ;;
      weak:*) weak+=("${line#weak:}") ;;
      *) allowed+=("$line") ;;
    esac
  done <"$allow"
  local strip='s/^(typeinfo name for |typeinfo for |vtable for |VTT for |construction vtable for |non-virtual thunk to |virtual thunk to |covariant return thunk to |guard variable for )+//'
  local bad=() type name plain pattern ok
  # Defined dynamic symbols: "type mangled-name", demangled alongside.
  while IFS=$'\t' read -r type name; do
    plain=$(sed -E "$strip" <<<"$name")
    ok=0
    for pattern in "${allowed[@]}"; do
      if [[ "$plain" =~ $pattern ]]; then ok=1; break; fi
    done
    if [[ $ok -eq 0 && "$type" =~ ^[WVu]$ ]]; then
      for pattern in "${weak[@]}"; do
        if [[ "$plain" =~ $pattern ]]; then ok=1; break; fi
      done
    fi
    for pattern in "${denied[@]}"; do
      if [[ "$plain" =~ $pattern ]]; then ok=0; break; fi
    done
    [[ $ok -eq 1 ]] || bad+=("$type $name")
  done < <(nm -D --defined-only "$library" | awk 'NF == 3 {print $2 "\t" $3}' | c++filt)
  local count
  count=$(nm -D --defined-only "$library" | awk 'NF == 3' | wc -l)
  echo "abi: $count exported symbols"
  local exported
  exported=$(nm -D --defined-only "$library" | awk 'NF == 3 {print $3}' | c++filt |
    sed -n 's/^typeinfo for //p' | sort)
  echo "abi: polymorphic public classes with exported type information:"
  sed 's/^/  /' <<<"$exported"
  # The interfaces hosts implement (TOV_INTERFACE in include/): the library
  # exports their type information wherever it emits it; the others only
  # hosts hold.
  local interface
  echo "abi: host-implemented interfaces (TOV_INTERFACE):"
  while read -r interface; do
    if grep -Eq "(^|::)${interface}\$" <<<"$exported"; then
      echo "  $interface: exported"
    else
      echo "  $interface: not emitted by the library (only hosts define it)"
    fi
  done < <(grep -rhoE 'class TOV_INTERFACE [A-Za-z_0-9]+' "$source_dir/include" |
           awk '{print $3}' | sort -u)
  if [[ ${#bad[@]} -gt 0 ]]; then
    echo "abi: FAILED: exported outside the public interface (abi/exports.allow):" >&2
    printf '  %s\n' "${bad[@]}" >&2
    return 1
  fi
}

work=$build/abi
mkdir -p "$work"
case "$mode" in
  update)
    describe "$baseline"
    echo "abi: baseline $(soname_of "$baseline") recorded in ${baseline#"$source_dir"/}"
    ;;
  exports)
    check_exports
    ;;
  check)
    [[ -f "$baseline" ]] || { echo "abi: no baseline; record one with make abi-update" >&2; exit 1; }
    current=$work/current.abi
    describe "$current"
    status=0
    rc=0
    abidiff "$baseline" "$current" >"$work/abidiff.txt" 2>&1 || rc=$?
    if ((rc & 3)); then
      echo "abi: abidiff could not compare (status $rc):" >&2
      cat "$work/abidiff.txt" >&2
      exit 1
    fi
    # abidiff marks only some incompatible changes as such (status bit 8);
    # a changed public type, or a changed function or variable, only sets
    # "changed" (bit 4). Anything beyond additions counts as incompatible.
    removed_or_changed=$(grep -E '^(Functions|Variables|Function symbols|Variable symbols) changes summary:' \
      "$work/abidiff.txt" | grep -Eo '[0-9]+ (Removed|Changed)' | awk '{s += $1} END {print s + 0}' || true)
    old_soname=$(soname_of "$baseline")
    new_soname=$(soname_of "$current")
    if ((rc & 8)) || [[ "$removed_or_changed" -gt 0 ]]; then
      if [[ "$old_soname" != "$new_soname" ]]; then
        echo "abi: incompatible changes, with a new soname ($old_soname -> $new_soname): allowed."
        echo "abi: record the new baseline with make abi-update."
      else
        echo "abi: FAILED: incompatible change to $new_soname (abidiff status $rc):" >&2
        cat "$work/abidiff.txt" >&2
        echo "abi: keep the interface, or raise the major version (the soname) in the same commit." >&2
        status=1
      fi
    elif ((rc & 4)); then
      echo "abi: compatible additions since the baseline:"
      cat "$work/abidiff.txt"
      echo "abi: record them deliberately with make abi-update."
    else
      echo "abi: $new_soname matches the baseline"
    fi
    check_exports || status=1
    exit $status
    ;;
  *) usage ;;
esac
