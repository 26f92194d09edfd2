#!/bin/bash
# Runs a command with everything that Windows programs need here:
#
#   tools/with-wine.sh wine build/win32/tests/decode_tests.exe
#   tools/with-wine.sh --stop      ends what earlier runs left running
#
# The Wine prefix is build/wine-prefix unless WINEPREFIX names another one; it is made on first use.
# One wineserver and one virtual display stay behind for the next run, which then starts in about
# 0.1 s instead of seconds.
set -euo pipefail

# What stays behind must not keep a lock of the caller's: no descriptor of it is handed on but the
# first three. 255 is this script.
for descriptor in "/proc/$$/fd/"*; do
  descriptor=${descriptor##*/}
  if ((descriptor > 2 && descriptor != 255)); then eval "exec $descriptor>&-"; fi
done

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${WINEPREFIX:-$root/build/wine-prefix}
export WINEARCH=win32
export WINEDEBUG=${WINEDEBUG:--all}
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}  # no offers to install them
# Code page 1252, so that the bytes 80h to FFh survive in window texts, and file names in UTF-8.
export LC_ALL=C.UTF-8

display_file=$WINEPREFIX/display  # "<process> <number>" of our Xvfb

display_runs() {
  local process
  [[ -r $display_file ]] && read -r process number <"$display_file" &&
    [[ $(tr '\0' ' ' 2>/dev/null <"/proc/$process/cmdline") == Xvfb\ * ]]
}

start_display() {
  # Xvfb looks for a free number itself and says which one when it is ready. Its screen is larger
  # than any window of ours.
  local fifo=$WINEPREFIX/display.fifo
  rm -f "$fifo"
  mkfifo "$fifo"
  setsid Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$fifo" \
    </dev/null >/dev/null 2>&1 9>&- &
  local process=$!
  read -r -t 30 number <"$fifo" || {
    echo "with-wine.sh: Xvfb did not start; is the package xvfb installed?" >&2
    exit 1
  }
  rm -f "$fifo"
  echo "$process $number" >"$display_file"
}

make_prefix() {
  # The first Windows program makes the prefix. This one also has windows stay where the programs
  # put them: no window manager touches them.
  wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f \
    </dev/null >/dev/null 2>&1 9>&- || {
    echo "with-wine.sh: the Wine prefix $WINEPREFIX cannot be made; is wine32 installed?" >&2
    exit 1
  }
  touch "$WINEPREFIX/ready"
}

if [[ ${1-} == --stop ]]; then
  wineserver -k 2>/dev/null || true
  if display_runs; then kill "$(cut -d' ' -f1 "$display_file")"; fi
  rm -f "$display_file"
  exit 0
fi
if (($# == 0)); then
  echo "usage: tools/with-wine.sh COMMAND [ARGUMENT...] | --stop" >&2
  exit 2
fi
for program in wine Xvfb; do
  if ! command -v "$program" >/dev/null; then
    echo "with-wine.sh: $program is missing; install wine32 and xvfb." >&2
    exit 1
  fi
done

mkdir -p "$WINEPREFIX"
WINEPREFIX=$(cd "$WINEPREFIX" && pwd)  # Wine wants it absolute
exec 9>"$WINEPREFIX/with-wine.lock"  # two first runs at once make one prefix
flock 9
display_runs || start_display
export DISPLAY=:$number
# Stays behind; fails when it runs already. The first program starts Wine's services, which keep its
# output open as long as they run: that must not be the caller's, who may wait for its end.
if wineserver -p </dev/null >/dev/null 2>&1 9>&- && [[ -e $WINEPREFIX/ready ]]; then
  wine cmd /c exit </dev/null >/dev/null 2>&1 9>&- || true
fi
[[ -e $WINEPREFIX/ready ]] || make_prefix
exec 9>&-

exec "$@"
