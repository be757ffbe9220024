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

echo "every picture of the gallery exists, and the page shows or links each"
python3 - out/gallery <<'END'
import os, re, sys
page = open(os.path.join(sys.argv[1], "index.html"), encoding="utf-8").read()
linked = {name for name in re.findall(r'(?:src|href)="([^"#]+)"', page)}
there = set(os.listdir(sys.argv[1])) - {"index.html"}
assert linked == there and len(there) > 20, linked ^ there
assert all('loading="lazy"' in tag for tag in re.findall("<img[^>]*>", page))
assert {a for a in re.findall(r'href="#([^"]+)"', page)} == set(re.findall(r'id="([^"]+)"', page))
END

echo "the manual page and the completions are installed"
test -s "$work/share/man/man1/roxe.1"
test -s "$work/share/bash-completion/completions/roxe"
test -s "$work/share/zsh/site-functions/_roxe"
test -s "$work/share/fish/vendor_completions.d/roxe.fish"
