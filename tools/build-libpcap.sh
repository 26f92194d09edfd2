#!/bin/bash
# Builds the static libpcap that the reference host reads capture files with:
#
#   tools/build-libpcap.sh [WORLD...]    the first three unless named
#
#   build/libpcap/win32/libpcap.a    for the Windows programs, with the cross compiler
#   build/libpcap/native/libpcap.a   for the 32-bit tests on this machine
#   build/libpcap/linux/libpcap.a    for capdump on this machine
#   build/libpcap/arm64/libpcap.a    for capdump on arm64, with the cross compiler
#   build/libpcap/include/pcap.h     the headers of all
# The source is Debian's, so it is pinned and patched as the distribution does. What is already
# built is left alone: a second run does nothing.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build/libpcap
worlds=("$@")
((${#worlds[@]})) || worlds=(win32 native linux)

as_root() { if [ "$(id -u)" = 0 ]; then "$@"; else sudo "$@"; fi; }

install_tools() {
  local missing=()
  command -v flex >/dev/null || missing+=(flex)
  command -v bison >/dev/null || missing+=(bison)
  command -v patch >/dev/null || missing+=(patch)
  command -v dpkg-source >/dev/null || missing+=(dpkg-dev)
  [ ${#missing[@]} = 0 ] && return
  as_root apt-get update -qq || true  # one list out of step does no harm; the install decides
  as_root apt-get install -qq -y --no-install-recommends "${missing[@]}" >/dev/null
}

# Fetches and unpacks the source package into $work. The machine's own package lists usually leave
# sources out: a copy of its settings with sources switched on is used for this one call, in a
# state folder of its own.
fetch_source() {
  local settings=$work/apt
  mkdir -p "$settings/parts" "$settings/lists/partial" "$settings/cache/archives/partial"
  local file
  for file in /etc/apt/sources.list.d/*.sources; do
    if grep -qs debian-archive-keyring "$file"; then
      sed 's/^Types:.*/Types: deb-src/' "$file" > "$settings/parts/$(basename "$file")"
    fi
  done
  if [ -s /etc/apt/sources.list ]; then
    sed -n 's/^deb /deb-src /p' /etc/apt/sources.list > "$settings/parts/main.list"
  fi
  local apt=(apt-get -qq -o "Dir::Etc::SourceList=/dev/null" -o "Dir::Etc::SourceParts=$settings/parts"
             -o "Dir::State::Lists=$settings/lists" -o "Dir::Cache=$settings/cache"
             -o "APT::Sandbox::User=root")
  "${apt[@]}" update || true  # as above: the fetch decides
  (cd "$work" && "${apt[@]}" source libpcap)
}

# build NAME [cmake option...]
build() (
  local name=$1
  shift
  cd "$work"  # its configuration leaves a file named NUL: where it runs
  cmake -S "$work/source" -B "$work/$name" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_FLAGS_RELEASE="-O2 -g0" -DPCAP_TYPE=null -DENABLE_REMOTE=OFF -DDISABLE_DBUS=ON \
    -DDISABLE_RDMA=ON "$@" >"$work/$name.log" 2>&1 &&
    cmake --build "$work/$name" --target pcap_static >>"$work/$name.log" 2>&1 || {
      cat "$work/$name.log" >&2
      echo "build-libpcap: the $name build of libpcap failed, see above" >&2
      exit 1
    }
  mkdir -p "$out/$name"
  cp "$(find "$work/$name" -name 'libpcap*.a' | head -n 1)" "$out/$name/libpcap.a.new"
  mv "$out/$name/libpcap.a.new" "$out/$name/libpcap.a"
)

missing=()
for world in "${worlds[@]}"; do
  [ -f "$out/$world/libpcap.a" ] || missing+=("$world")
done
[ ${#missing[@]} = 0 ] && exit 0

# The packaging leaves a file with a Windows device name in its source folder, so the work is done
# on a copy outside the tree.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
install_tools
fetch_source
mkdir "$work/source"
(cd "$work"/libpcap-*/ && tar cf - --exclude='NUL:' .) | tar xf - -C "$work/source"
# Only the library is wanted; its test programs need more than the platform gives.
sed -i '/testprogs/d' "$work/source/CMakeLists.txt"
mkdir -p "$out/include/pcap"
cp "$work/source/pcap.h" "$out/include/"
cp "$work/source"/pcap/*.h "$out/include/pcap/"
for world in "${missing[@]}"; do
  case $world in
    win32) build win32 -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw32.cmake" ;;
    native) build native -DCMAKE_C_FLAGS=-m32 ;;
    linux) build linux ;;
    arm64) build arm64 -DCMAKE_TOOLCHAIN_FILE="$root/cmake/arm64.cmake" ;;
    *)
      echo "build-libpcap: there is no world \"$world\": name win32, native, linux or arm64" >&2
      exit 1
      ;;
  esac
done
