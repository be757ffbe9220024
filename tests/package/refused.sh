#!/usr/bin/env bash
# Builds that would give other bytes end in a sentence that says why.
set -euo pipefail
cd "$(dirname "$0")/../.."

compiled() {  # compiled COMPILER FLAG...
  echo '#include "frame/numbers.h"' | "$1" -std=c++20 -Isrc -fsyntax-only -x c++ "${@:2}" - 2>&1
}

refused() {  # refused WHAT COMPILER FLAG...
  local what=$1 output
  shift
  if output=$(compiled "$@"); then
    echo "$* is not refused"
    exit 1
  fi
  grep -q "#error \"ROXE gives the same bytes everywhere: $what" <<<"$output" || { echo "$output"; exit 1; }
  echo "$*: refused"
}

for compiler in g++ clang++; do
  compiled $compiler -O3
  refused "-ffast-math and -Ofast change them" $compiler -O2 -ffast-math
  refused "-ffast-math and -Ofast change them" $compiler -Ofast
done
if [ "$(uname -m)" = x86_64 ]; then
  refused "x87 arithmetic changes them" i686-linux-gnu-g++
  refused "x87 arithmetic changes them" i686-linux-gnu-g++ -msse2 -mfpmath=387
  compiled i686-linux-gnu-g++ -msse2 -mfpmath=sse
fi
