#!/usr/bin/env bash
# Builds every fuzz target as fuzzing services expect it: compilers and flags from CC, CXX, CFLAGS,
# CXXFLAGS and LIB_FUZZING_ENGINE, the results in OUT: TARGET, TARGET_seed_corpus.zip and
# TARGET.options. The build itself takes place in WORK.
#   The tool's target is left out where the libraries that it links are missing.
set -euo pipefail
: "${CC:?}" "${CXX:?}" "${OUT:?}" "${WORK:?}"
source=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$OUT"

# Shared libraries that a target needs lie beside it.
cmake -S "$source" -B "$WORK" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DCMAKE_C_COMPILER="$CC" -DCMAKE_CXX_COMPILER="$CXX" \
  -DCMAKE_C_FLAGS="${CFLAGS-}" -DCMAKE_CXX_FLAGS="${CXXFLAGS-}" \
  -DCMAKE_C_FLAGS_RELWITHDEBINFO="-g -DNDEBUG" -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-g -DNDEBUG" \
  -DROXE_FUZZ=ON -DROXE_TESTS=OFF -Dfuzzing_engine="${LIB_FUZZING_ENGINE--fsanitize=fuzzer}" \
  -DCMAKE_BUILD_RPATH='$ORIGIN/lib' >"$WORK.log" 2>&1 &&
  cmake --build "$WORK" --target fuzz_targets >>"$WORK.log" 2>&1 || {
  cat "$WORK.log"
  exit 1
}

# Files are replaced, not written over: an earlier target may be running.
for program in "$WORK"/fuzz/fuzz_*; do
  target=${program##*/fuzz_}
  cp --remove-destination "$program" "$OUT/$target"
  python3 -m zipfile -c "$OUT/${target}_seed_corpus.zip" "$source/fuzz/corpus/$target/"
  # Memory that only a hostile header asks for is a finding; so is a call without end.
  printf '[libfuzzer]\nmax_len = %s\ntimeout = 25\nrss_limit_mb = 2048\nmalloc_limit_mb = 512\n' \
    "$([ "$target" = pictures ] && echo 20000 || echo 1000)" >"$OUT/$target.options"
done
if [ -f "$WORK/fuzz/fuzz_pictures" ]; then
  mkdir -p "$OUT/lib"
  # Asked where no earlier copies of them are found.
  ldd "$WORK/fuzz/fuzz_pictures" | sed -n 's/.* => \(\/[^ ]*\) .*/\1/p' | grep -vE '/(libc|libm|libdl|libpthread|librt|libgcc_s|libstdc\+\+)\.so' |
    xargs -r cp --remove-destination -Lt "$OUT/lib"
fi
