#!/usr/bin/env bash
# shape.sh BUILD: what the library exports and needs, and what its objects must not hold.
set -euo pipefail
build=$(cd "$1" && pwd)
cd "$(dirname "$0")/../.."

fail() {
  echo "$1"
  exit 1
}

echo "exported: exactly the operations of the header"
grep -o 'roxeu\?[A-Z][A-Za-z]*(' include/roxe.h | tr -d '(' | sort -u >"$build/declared.txt"
nm -D --defined-only "$build/libroxe.so" | awk '$2 == "T" { sub("@.*", "", $3); print $3 }' | sort >"$build/exported.txt"
diff "$build/declared.txt" "$build/exported.txt"
[ "$(wc -l <"$build/exported.txt")" -eq 15 ] || fail "there are not fifteen operations"
[ "$(nm -D --defined-only "$build/libroxe.so" | grep -vc ' T ')" -eq 1 ] || fail "more than one version node"
objdump -p "$build/libroxe.so" | grep -q 'SONAME *libroxe.so.1$' || fail "the SONAME is not libroxe.so.1"

echo "needed: libc and libm"
objdump -p "$build/libroxe.so" | awk '$1 == "NEEDED" { print $2 }' | sort | diff - <(printf '%s\n' libc.so.6 libm.so.6)

objects=$(find "$build/CMakeFiles/roxe_objects.dir" "$build/CMakeFiles/roxe_seams.dir" -name '*.o')
echo "no mutable data, no static constructors"
for object in $objects; do
  if objdump -h "$object" | awk '$2 ~ /^\.(data|bss|tdata|tbss)$/ && $3 !~ /^0+$/ { found = 1 } $2 ~ /^\.(init_array|ctors)/ { found = 1 } END { exit !found }'; then
    fail "$object holds mutable data or a constructor"
  fi
done

echo "no mutable data and no static constructor in the library but the compiler's own"
# The start-up code's, and the record of the processor that __builtin_cpu_supports reads.
own='\.data|\.bss|__dso_handle|__TMC_END__|completed\.0|__cpu_(model|features2)'
if objdump -t "$build/libroxe.so" | awk '/ \.(data|bss|tdata|tbss)\t/ { print $NF }' | grep -vxE "$own"; then
  fail "the library holds mutable data"
fi
constructors=$(objdump -h "$build/libroxe.so" | awk '$2 == ".init_array" { print $3 }')
case $constructors in
  00000008 | 00000010) ;;  # the start-up code's frame_dummy, the support code's look at the processor
  *) fail "the library holds a constructor" ;;
esac

echo "no weak symbols in the tables of rows"
for object in $(find "$build/CMakeFiles/roxe_objects.dir" -name 'rows_*.o'); do
  if nm "$object" | grep -q ' [VvWw] '; then
    fail "$object holds weak symbols"
  fi
done

echo "nothing of the platform but memory, mathematics and what mathematics disturbs"
if nm -D --undefined-only "$build/libroxe.so" | sed 's/@.*//' | awk '{ print $2 }' |
  grep -vxE 'calloc|free|mem(cpy|set|move|cmp)|__stack_chk_fail|__cxa_finalize|_ITM_.*|__gmon_start__|(sin|cos|tan|asin|atan|sqrt|pow|log|log10|exp)(f)?|fmaf?|fmodf?|fe(get|set)env|__errno_location'; then
  fail "the library needs something that it should not"
fi
