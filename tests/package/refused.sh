#!/usr/bin/env bash
# Builds that would give other bytes end in a sentence that says why.
set -euo pipefail
cd "$(dirname "$0")/../.."
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

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

fast="-ffast-math, -Ofast and parts of them change them"
for compiler in g++ clang++; do
  compiled $compiler -O3
  for flag in -ffast-math -Ofast -ffinite-math-only; do
    refused "$fast" $compiler -O2 $flag
  done
done
for flag in -funsafe-math-optimizations -freciprocal-math -fno-signed-zeros; do
  refused "$fast" g++ -O2 $flag
done
for flag in -funsafe-math-optimizations -fassociative-math -freciprocal-math -fno-signed-zeros; do
  output=$(cmake -S . -B "$scratch" -DCMAKE_CXX_FLAGS=$flag 2>&1) && { echo "cmake takes $flag"; exit 1; }
  grep -q "same bytes everywhere: $flag changes them" <<<"$(tr -s ' \n' ' ' <<<"$output")" ||
    { echo "$output"; exit 1; }
  echo "cmake with $flag: refused"
done
if [ "$(uname -m)" = x86_64 ]; then
  refused "x87 arithmetic changes them" i686-linux-gnu-g++
  refused "x87 arithmetic changes them" i686-linux-gnu-g++ -msse2 -mfpmath=387
  compiled i686-linux-gnu-g++ -msse2 -mfpmath=sse
fi
