#!/usr/bin/env bash
# abi.sh BUILD: the binary interface of the shared library, built with -g, is that of
# abi/libroxe1.abi; and this comparison notices what a change would break.
#   --renew  writes abi/libroxe1.abi: for a new operation, or with a new SONAME
# abidiff is given no folder of headers: with one it would see no type at all.
set -euo pipefail
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/../.."
baseline=abi/libroxe1.abi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

objdump -h "$build/libroxe.so" | grep '\.debug_info' >/dev/null || {
  echo "$build is built without -g"
  exit 1
}
if [ "${2:-}" = --renew ]; then
  abidw --exported-interfaces-only --drop-private-types --no-corpus-path --no-comp-dir-path \
    --no-show-locs --headers-dir include --out-file $baseline "$build/libroxe.so"
fi
abidiff $baseline "$build/libroxe.so"
echo "the binary interface: unchanged"

# A copy of the operations in which a field and a parameter have another type, a record another
# size and an operation another name. It need not run: the tables of rows stay out.
cp -r include src "$work"
(
  cd "$work"
  sed -i 's/^  uint32_t format;/  int32_t format;/; s/x3, y3;/x3, y3, z3;/' include/roxe.h
  sed -i 's/uint32_t shadow\b/uint64_t shadow/' include/roxe.h src/tone/shadow_highlight.cpp
  sed -i 's/roxeColorTintMask/roxeTintMask/' include/roxe.h src/colour/colour_tint.cpp
  c++ -std=c++20 -g -O0 -w -fPIC -shared -fvisibility=hidden -ffp-contract=off -Iinclude -Isrc \
    src/{frame,geometry,blur,colour,tone}/*.cpp -Wl,--version-script=src/roxe.map \
    -Wl,-soname=libroxe.so.1 -o changed.so
)
status=0
abidiff --headers-dir2 /work/wt/deb/include $baseline "$work/changed.so" >"$work/report" || status=$?
noticed() {  # noticed WHAT REGEX...
  local what=$1 regex
  shift
  for regex in "$@"; do
    grep -qE "$regex" "$work/report" || { echo "not noticed: $what"; cat "$work/report"; exit 1; }
  done
  echo "noticed: $what"
}
[ $((status & 4)) -ne 0 ] || { echo "changes pass for the same interface"; exit 1; }
noticed "an operation that is gone" 'roxeTintMask' "\[D\].*roxeColorTintMask"
noticed "another type of a parameter" 'roxeShadowHighlight' "parameter 3 of type 'typedef uint32_t' changed"
noticed "another type of a field" "type of 'uint32_t format' changed"
noticed "another size of a record" "type size changed from 256 to 288"
