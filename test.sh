#!/bin/bash
# All tests, in both worlds: natively with sanitizers over the Win32 stand-in, and the real DLL and
# tools under Wine. Installs what is missing and builds first.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

tools/install-packages.sh
for preset in native win32; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$(nproc)"
done
ctest --preset native
ctest --preset win32
