#!/bin/bash
# Fails for a header whose tests are not found: a folder's are in tests/FOLDER. And for a test that is
# written and never built. Run in the root of the sources.
set -euo pipefail

failures=0
fail() {
  echo "check_tests.sh: $1" >&2
  failures=$((failures + 1))
}

while read -r header; do
  folder=tests/${header%/*}
  [[ -d $folder && -n $(find "$folder" -maxdepth 1 -type f ! -name "*.h") ]] || fail "$header has no tests in $folder"
done < <(find errors tracking tree dimse upper_layer plugin interface host port -name '*.h')
while read -r file; do
  grep -qE "[( ]${file#tests/}([ )]|$)" tests/CMakeLists.txt || fail "$file is not built"
done < <(find tests -name '*_test.cpp')
((failures == 0))
