#!/bin/bash
# Installs the Debian packages that building, running and testing need and that are not there yet.
# When nothing is missing it takes no time and touches nothing.
set -euo pipefail

missing=()
# need PACKAGE COMMAND_OR_FILE: the package is there when the command or the file is
need() {
  case $2 in
    /*) [[ -e $2 ]] || missing+=("$1") ;;
    *) command -v "$2" >/dev/null || missing+=("$1") ;;
  esac
}
need cmake cmake
need ninja-build ninja
need g++ g++
need g++-multilib /usr/include/x86_64-linux-gnu/c++/12/32
need g++-mingw-w64-i686-posix i686-w64-mingw32-g++-posix
need g++-mingw-w64-i686-win32 i686-w64-mingw32-g++-win32
need googletest /usr/src/googletest/CMakeLists.txt
need wine wine
need wine32:i386 /usr/share/doc/wine32
need xvfb Xvfb
need python3 python3
need jq jq
# zlib for the three worlds.
need zlib1g-dev /usr/include/zlib.h
need lib32z1-dev /usr/lib32/libz.a
need libz-mingw-w64-dev /usr/i686-w64-mingw32/lib/libz.a
# For the build of libpcap from its source package.
need flex flex
need bison bison
need patch patch
need dpkg-dev dpkg-source
((${#missing[@]})) || exit 0

echo "Installing ${missing[*]}" >&2
if ! command -v apt-get >/dev/null; then
  echo "install-packages.sh: there is no apt-get here; install these by hand: ${missing[*]}" >&2
  exit 1
fi
as_root() { if ((EUID)); then sudo "$@"; else "$@"; fi; }
export DEBIAN_FRONTEND=noninteractive

[[ " ${missing[*]} " != *:i386* ]] || as_root dpkg --add-architecture i386
# A mirror that is just being updated fails here for one of its lists; the others are enough.
as_root apt-get update -qq || true
# Both architectures of a library must have the same version. Where the list of one is out of step,
# the main release has both.
install() { as_root apt-get install -qq -y --no-install-recommends "$@" "${missing[@]}" >&2; }
release=$(. /etc/os-release && echo "${VERSION_CODENAME-}")
install || install -t "${release:-stable}" --allow-downgrades || {
  echo "install-packages.sh: apt-get could not install ${missing[*]}; see above why" >&2
  exit 1
}
