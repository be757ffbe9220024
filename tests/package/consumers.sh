#!/usr/bin/env bash
# consumers.sh BUILD: installs a build and uses it from C, found by pkg-config and by find_package,
# and compiles and runs the example of the README.
set -euo pipefail
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/prefix" >/dev/null
libraries=$(dirname "$(find "$work/prefix" -name libroxe.so)")
export PKG_CONFIG_PATH=$libraries/pkgconfig
sed -i "s|^prefix=.*|prefix=$work/prefix|" "$PKG_CONFIG_PATH/roxe.pc"

echo "pkg-config, shared"
cc tests/package/consumer.c $(pkg-config --cflags --libs roxe) -o "$work/shared"
LD_LIBRARY_PATH=$libraries "$work/shared"

echo "pkg-config, static"
cc tests/package/consumer.c $(pkg-config --cflags roxe) "$libraries/libroxe.a" -lm -o "$work/static"
"$work/static"

echo "find_package"
cmake -S tests/package -B "$work/build" -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/build" >/dev/null
"$work/build/consumer"
"$work/build/consumer_static"

echo "the example of the README"
sed -n '/^```c$/,/^```$/p' README.md | sed '1d;$d' >"$work/example.c"
grep -q roxe.h "$work/example.c"
cc -std=c99 -Wall -Wextra -Werror "$work/example.c" $(pkg-config --cflags --libs roxe) -o "$work/example"
LD_LIBRARY_PATH=$libraries "$work/example"
