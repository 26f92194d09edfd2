#!/bin/bash
# All tests: natively with sanitizers over the port of Win32, the real DLL and tools under Wine, and
# that capdump for this system shows the same as the one for Windows. Installs what is missing and
# builds first.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

tools/install-packages.sh
for preset in native win32 linux; do
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$(nproc)"
done
ctest --preset native
ctest --preset win32
ctest --preset linux
