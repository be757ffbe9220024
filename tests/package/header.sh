#!/usr/bin/env bash
# roxe.h compiles without a warning in every C from C99 and every C++ from C++11, with both compilers.
set -euo pipefail
cd "$(dirname "$0")/../.."

strict=(-Iinclude -Wall -Wextra -Wpedantic -Wconversion -Werror -fsyntax-only)
for standard in c99 c11 c17; do
  for compiler in gcc clang; do
    $compiler "${strict[@]}" -std=$standard tests/package/consumer.c
  done
done
for standard in c++11 c++14 c++17 c++20 c++2b; do
  for compiler in g++ clang++; do
    $compiler "${strict[@]}" -std=$standard -x c++ tests/package/consumer.c
  done
done
