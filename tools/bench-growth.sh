#!/bin/bash
# How the module's cost grows with its input: counts the instructions (valgrind --tool=callgrind)
# and the memory of each shape of bench/growth_bench.cpp for n and 2n. Fails when one of them grows
# by more than 2.3.
#
#   tools/bench-growth.sh [SHAPE...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

cmake --preset bench >/dev/null
cmake --build --preset bench --target growth_bench | grep -v "^\[\|ninja:" || true
bench=$PWD/build/bench/bench/growth_bench
folder=$(mktemp -d)  # the program writes its dictionaries there
trap 'rm -rf "$folder"' EXIT
cd "$folder"

instructions() {  # SHAPE N
  valgrind --tool=callgrind --callgrind-out-file=/dev/null --toggle-collect=RunShape \
    "$bench" "$1" "$2" 2>&1 >memory | awk '/Collected/ { print $4 }'
}

status=0
printf '%-26s %9s %14s %7s %12s %7s\n' shape n instructions growth bytes growth
while read -r shape n; do
  if (($# > 0)) && [[ " $* " != *" $shape "* ]]; then continue; fi
  one=$(instructions "$shape" "$n"); one_memory=$(<memory)
  two=$(instructions "$shape" $((2 * n))); two_memory=$(<memory)
  awk -v s="$shape" -v n="$n" -v a="$one" -v b="$two" -v p="$one_memory" -v q="$two_memory" 'BEGIN {
    printf "%-26s %9d %14d %7.2f %12d %7.2f\n", s, n, a, b / a, p, q / p
    exit b / a > 2.3 || q / p > 2.3 }' || status=1
done < <("$bench")
exit $status
