#!/bin/bash
# Installs the Debian packages that are needed and not there yet:
#
#   tools/install-packages.sh          for building, running and testing everything
#   tools/install-packages.sh linux    only for building capdump for this system
#
# When nothing is missing it takes no time and touches nothing. What the package manager says goes to
# a file that is shown when it fails.
set -euo pipefail

missing=()
# need PACKAGE COMMAND_OR_FILE: the package is there when the command or the file is
need() {
  case $2 in
    /*) [[ -e $2 ]] || missing+=("$1") ;;
    *) command -v "$2" >/dev/null || missing+=("$1") ;;
  esac
}

need_for_linux() {
  need cmake cmake
  need ninja-build ninja
  need g++ g++
  need zlib1g-dev /usr/include/zlib.h
  # For the build of libpcap from its source package.
  need flex flex
  need bison bison
  need patch patch
  need dpkg-dev dpkg-source
}

need_for_the_rest() {
  need g++-multilib /usr/include/x86_64-linux-gnu/c++/12/32
  need gcc-multilib /usr/include/asm/errno.h
  need g++-mingw-w64-i686-posix i686-w64-mingw32-g++-posix
  need g++-mingw-w64-i686-win32 i686-w64-mingw32-g++-win32
  need googletest /usr/src/googletest/CMakeLists.txt
  need wine wine
  need wine32:i386 /usr/share/doc/wine32
  need xvfb Xvfb
  need python3 python3
  need jq jq
  need lib32z1-dev /usr/lib32/libz.a
  need libz-mingw-w64-dev /usr/i686-w64-mingw32/lib/libz.a
}

need_for_linux
[[ ${1-} == linux ]] || need_for_the_rest
((${#missing[@]})) || exit 0

echo "Installing ${missing[*]}" >&2
if ! command -v apt-get >/dev/null; then
  echo "install-packages.sh: there is no apt-get here; install these by hand: ${missing[*]}" >&2
  exit 1
fi
log=$(mktemp)
trap 'rm -f "$log"' EXIT
export DEBIAN_FRONTEND=noninteractive
as_root() {
  if ((EUID)); then sudo --preserve-env=DEBIAN_FRONTEND "$@"; else "$@"; fi >>"$log" 2>&1
}

[[ " ${missing[*]} " != *:i386* ]] || as_root dpkg --add-architecture i386
# A mirror that is just being updated fails here for one of its lists; the others are enough.
as_root apt-get update -qq || true
# Both architectures of a library must have the same version. Where the list of one is out of step,
# the main release has both.
install() { as_root apt-get install -qq -y --no-install-recommends "$@" "${missing[@]}"; }
release=$(. /etc/os-release && echo "${VERSION_CODENAME-}")
install || install -t "${release:-stable}" --allow-downgrades || {
  cat "$log" >&2
  echo "install-packages.sh: apt-get could not install ${missing[*]}; see above why" >&2
  exit 1
}
