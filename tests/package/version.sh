#!/usr/bin/env bash
# Every place that names the version names that of CMakeLists.txt.
set -euo pipefail
cd "$(dirname "$0")/../.."

version=$(sed -n 's/^project(roxe VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
[[ $version =~ ^[0-9]+\.[0-9]+\.[0-9]+$ ]]

same() {  # same FILE VERSION
  [ "$2" = "$version" ] || { echo "$1 says ${2:-nothing}, CMakeLists.txt $version"; exit 1; }
  echo "$1: $2"
}
same debian/changelog "$(sed -n '1s/^roxe (\(.*\)) .*/\1/p' debian/changelog)"
same python/roxe/__init__.py "$(sed -n 's/^__version__ = "\(.*\)"$/\1/p' python/roxe/__init__.py)"
same web/package.json "$(sed -n 's/^  "version": "\(.*\)",$/\1/p' web/package.json)"
