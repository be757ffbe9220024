#!/usr/bin/env bash
# The demo runs, and what it has built can be installed and used.
set -euo pipefail
cd "$(dirname "$0")/../.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

scripts/demo >/dev/null
cmake --install build/demo --prefix "$work" >/dev/null
"$work/bin/roxe" pick examples/photos/coffee-cup.png 300,200 | grep -q '^#'
test -e "$work"/lib*/libroxe.so -o -e "$work"/lib/*/libroxe.so
