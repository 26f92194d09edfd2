#!/bin/bash
# What of the module, and of the host's capture code, the native tests and the fuzz corpora run
# through: a table by file for each, from llvm-cov. Builds into build/coverage. With --lines the
# lines that nothing ran are printed as well.
#
#   tools/coverage.sh [--lines]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
root=$PWD
programs=(tests/decode_tests tests/host_tests)
for target in module upper_layer message dictionary capture; do
  programs+=("fuzz/${target}_fuzzer")
done

cmake --preset coverage >/dev/null
cmake --build --preset coverage -j "$(nproc)" --target "${programs[@]##*/}" | grep -v '^\[' || true
cd build/coverage
rm -f ./*.profraw
objects=()
for program in "${programs[@]}"; do
  name=${program##*/}
  folders=()
  for folder in "$root"/fuzz/{corpus,regressions}/"${name%_fuzzer}"; do
    if [[ -d $folder ]]; then folders+=("$folder"); fi
  done
  LLVM_PROFILE_FILE=$PWD/$name.profraw "$program" "${folders[@]}" >/dev/null 2>&1 || {
    echo "coverage: $program fails" >&2
    exit 1
  }
  objects+=(-object "build/coverage/$program")
done
llvm-profdata merge -o all.profdata ./*.profraw
cd "$root"  # the names of the sources in the programs begin here
report() { llvm-cov "$1" "${objects[@]}" -instr-profile=build/coverage/all.profdata "${@:2}"; }

# llvm-cov counts an inline function that a program has no use for, and another one has, as one of
# mismatched data. Anything else would be a fault of this script.
report report -dump 2>&1 | grep '^hash-mismatch' | grep -v 'hash = 0x0$' || true
folders='dimse|errors|plugin|tracking|tree|upper_layer'
for others in "tests|fuzz|$folders" 'tests|fuzz|host'; do
  others="googletest|/($others)/"
  report report -ignore-filename-regex="$others" 2>/dev/null
  if [[ ${1-} == --lines ]]; then
    report show -path-equivalence=./build/coverage/.,"$root" -ignore-filename-regex="$others" 2>/dev/null |
      grep -E '^[^ |]+:$|^ +[0-9]+\| +0\|' | grep -B 1 '|' | grep -v '^--$' || true
  fi
done
