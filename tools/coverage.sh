#!/bin/bash
# What of the module the native tests and the fuzz corpora run through: a table by file, from
# llvm-cov. Builds into build/coverage.
#
#   tools/coverage.sh
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
root=$PWD

cmake --preset coverage >/dev/null
cmake --build --preset coverage -j "$(nproc)" \
  --target decode_tests module_fuzzer upper_layer_fuzzer message_fuzzer dictionary_fuzzer \
  | grep -v '^\[' || true
cd build/coverage
rm -f ./*.profraw
LLVM_PROFILE_FILE=$PWD/tests.profraw tests/decode_tests --gtest_brief=1 >/dev/null
objects=(tests/decode_tests)
for target in module upper_layer message dictionary; do
  folders=("$root/fuzz/corpus/$target")
  if [[ -d $root/fuzz/regressions/$target ]]; then folders+=("$root/fuzz/regressions/$target"); fi
  LLVM_PROFILE_FILE=$PWD/$target.profraw "fuzz/${target}_fuzzer" "${folders[@]}" 2>/dev/null
  objects+=(-object "fuzz/${target}_fuzzer")
done
llvm-profdata merge -o all.profdata ./*.profraw
llvm-cov report "${objects[@]}" -instr-profile=all.profdata \
  -ignore-filename-regex='googletest|/tests/|/fuzz/'
