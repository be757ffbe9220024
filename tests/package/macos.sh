#!/usr/bin/env bash
# How the shared library would be linked for macOS, of which no linker and no headers are here: its
# names, and nothing that only ELF knows. Configured for both processors, nothing is compiled.
set -euo pipefail
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

for processor in arm64 x86_64; do
  cat >"$work/$processor.cmake" <<END
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR $processor)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET $processor-apple-macos11)
set(CMAKE_CXX_COMPILER_TARGET $processor-apple-macos11)
set(CMAKE_C_COMPILER_WORKS ON)
set(CMAKE_CXX_COMPILER_WORKS ON)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_INSTALL_NAME_TOOL true)
END
  cmake -S . -B "$work/$processor" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$work/$processor.cmake" \
    -DROXE_HOST=OFF -DROXE_TESTS=OFF >"$work/log" || { cat "$work/log"; exit 1; }
  ninja -C "$work/$processor" -t commands libroxe.dylib >"$work/commands"
  for expected in "-dynamiclib" "-o libroxe.1.0.0.dylib" "-install_name @rpath/libroxe.1.dylib" \
    "libroxe.1.dylib libroxe.dylib" "-fvisibility=hidden"; do
    grep -e "$expected" "$work/commands" >/dev/null || { echo "$processor lacks $expected"; exit 1; }
  done
  if grep -oE -e '-(-version-script|-as-needed|-no-undefined|soname)' "$work/commands"; then exit 1; fi
  ninja -C "$work/$processor" -t commands libroxe.dylib | grep -o 'rows_[a-z0-9]*\.cpp$' | sort -u >"$work/rows"
  case $processor in
    arm64) printf '%s\n' rows_neon.cpp rows_plain.cpp ;;
    *) printf '%s\n' rows_avx2.cpp rows_avx512.cpp rows_plain.cpp rows_sse4.cpp ;;
  esac | diff - "$work/rows"
  echo "$processor: libroxe.1.dylib, found by @rpath"
done
