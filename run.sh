#!/bin/bash
# Shows the DICOM traffic of a capture file:
#
#   ./run.sh [capdump options] [CAPTURE...]
#   ./run.sh --native [capdump options] [CAPTURE...] without Wine, by capdump for this system
#   ./run.sh --window [CAPTURE]                      in a window, on your display
#
# Installs what is missing, builds, and runs capdump under Wine; ./run.sh --help lists its options.
# Without a capture it shows a sample with its decode trees. Names are relative to where you are.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
sample=$root/samples/store_explicit_le.pcap

# build PRESET TARGET...: quietly, what went wrong is shown, what went well is not.
build() {
  local log=$root/build/run.log
  mkdir -p "$root/build"
  {
    [[ -e $root/build/$1/build.ninja ]] || (cd "$root" && cmake --preset "$1")
    cmake --build "$root/build/$1" --target "${@:2}"
  } >"$log" 2>&1 || {
    cat "$log" >&2
    echo "run.sh: the build failed, see above" >&2
    exit 1
  }
}

# Whether the arguments name a capture, or ask for something that needs none.
is_complete() {
  while (($#)); do
    case $1 in
      --help | -h | --version) return 0 ;;
      --row | --connection | --inline | --element | --filter | --part | --max-temporary | --module | --save | --report | --export)
        (($# > 1)) || return 0  # capdump will complain
        shift
        ;;
      --) return $(($# < 2)) ;;
      -?*) ;;
      *) return 0 ;;
    esac
    shift
  done
  return 1
}

no_display=3  # capview's exit code

explain_no_display() {
  echo "run.sh: there is no display for a window here; show the capture as text with" \
    "./run.sh ${*@Q} instead (capdump)." >&2
  exit 1
}

show_window() {
  [[ -n ${DISPLAY-} ]] || explain_no_display "$@"
  build win32 module capview
  (($#)) || set -- "$sample"
  # A prefix of its own: the other one's desktop is on the virtual display.
  export WINEPREFIX=${WINEPREFIX:-$root/build/wine-prefix-window} WINEARCH=win32 LC_ALL=C.UTF-8
  export WINEDEBUG=${WINEDEBUG:--all} WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}
  local code=0
  wine "$root/build/win32/bin/capview.exe" "$@" || code=$?
  ((code != no_display)) || explain_no_display "$@"
  exit "$code"
}

native=false
if [[ ${1-} == --native ]]; then
  native=true
  shift
  "$root/tools/install-packages.sh" linux
  build linux capdump
else
  "$root/tools/install-packages.sh"
  if [[ ${1-} == --window ]]; then
    shift
    show_window "$@"
  fi
  build win32 module capdump
fi
if (($# == 0)); then
  set -- --tree "$sample"
elif ! is_complete "$@"; then
  set -- "$@" "$sample"
fi
! $native || exec "$root/build/linux/bin/capdump" "$@"
exec "$root/tools/with-wine.sh" wine "$root/build/win32/bin/capdump.exe" "$@"
