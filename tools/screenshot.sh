#!/bin/bash
# Takes docs/capview.png from the real window, on a sample, on a virtual display of its own:
#
#   tools/screenshot.sh [OUT.png [WIDTHxHEIGHT [capview arguments]]]
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
out=$(realpath -m "${1:-$root/docs/capview.png}")
size=${2:-1280x800}
shift $(($# < 2 ? $# : 2))
(($#)) || set -- --messages --row 2 --find "Value Field: 8001h" samples/store_explicit_le.pcap
if ! command -v import >/dev/null; then
  echo "screenshot.sh: import is missing; install imagemagick." >&2
  exit 1
fi

# The desktop of a Wine prefix keeps the size of the display that it was first shown on.
export WINEPREFIX
WINEPREFIX=$(mktemp -d)
fifo=$WINEPREFIX/display
mkfifo "$fifo"
Xvfb -displayfd 3 -screen 0 "${size}x24" -nolisten tcp 3>"$fifo" >/dev/null 2>&1 &
display=$!
read -r number <"$fifo"
export DISPLAY=:$number WINEARCH=win32 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=" LC_ALL=C.UTF-8
finish() {
  wineserver -k || true
  kill "$display"
  wait 2>/dev/null || true
  rm -rf "$WINEPREFIX"
}
trap finish EXIT

wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 </dev/null
printf '[capview]\nPlace=0 0 %s %s\n' "${size%x*}" "${size#*x}" >"$WINEPREFIX/capview.ini"
cd "$root"
wine build/win32/bin/capview.exe --settings "$WINEPREFIX/capview.ini" "$@" >/dev/null 2>&1 </dev/null &
sleep "${SCREENSHOT_DELAY:-5}"
import -window root "$out"
