#!/usr/bin/env bash
# consumers.sh BUILD: installs a build and uses it from C, found by pkg-config and by find_package,
# compiles and runs the example of the README, and uses the sources as a part of another project.
set -euo pipefail
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
libraries=$(dirname "$(find "$work/prefix" -name libroxe.so)")
mv "$work/prefix" "$work/moved"  # what is installed has no fixed place
libraries=${libraries/prefix/moved}
export PKG_CONFIG_PATH=$libraries/pkgconfig

echo "pkg-config, shared"
cc tests/package/consumer.c $(pkg-config --cflags --libs roxe) -o "$work/shared"
LD_LIBRARY_PATH=$libraries "$work/shared"

echo "pkg-config, static"
cc tests/package/consumer.c $(pkg-config --cflags roxe) "$libraries/libroxe.a" -lm -o "$work/static"
"$work/static"

echo "find_package"
cmake -S tests/package -B "$work/build" -DCMAKE_PREFIX_PATH="$work/moved" >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/consumer"
"$work/build/consumer_static"

echo "the example of the README"
sed -n '/^```c$/,/^```$/p' README.md | sed '1d;$d' >"$work/example.c"
grep -q roxe.h "$work/example.c"
cc -std=c99 -Wall -Wextra -Werror "$work/example.c" $(pkg-config --cflags --libs roxe) -o "$work/example"
LD_LIBRARY_PATH=$libraries "$work/example"

echo "a part of another project"
cmake -S tests/package/subproject -B "$work/part" -DROXE_SOURCES="$PWD" >/dev/null
cmake --build "$work/part" --parallel >/dev/null
"$work/part/consumer"

echo "without pkg-config: the tool without the formats that are found by it"
cmake -S . -B "$work/fewer" -DROXE_TESTS=OFF -DCMAKE_DISABLE_FIND_PACKAGE_PkgConfig=ON >"$work/said"
for part in tiff webp cmyk; do
  grep -q "The tool is built without $part: " "$work/said"
  grep -q "${part}_absent.cpp" "$work/fewer/compile_commands.json"
done

echo "without the codecs: the library alone"
cmake -S . -B "$work/alone" -DROXE_TESTS=OFF -DCMAKE_DISABLE_FIND_PACKAGE_JPEG=ON >/dev/null \
  2>"$work/said"
tr -s ' \n' ' ' <"$work/said" | grep -q 'The command-line tool is left out: JPEG was not found'
cmake --build "$work/alone" --target help >"$work/targets"
grep -q ' roxe$' "$work/targets"
if grep -q roxe_tool "$work/targets"; then exit 1; fi
