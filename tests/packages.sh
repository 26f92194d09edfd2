#!/bin/bash
# Makes the packages of a build and tries each in a clean folder: capdump runs, finds its dictionaries, and
# has its manual and completion beside it. Builds nothing.
#
#   tests/packages.sh BUILD_FOLDER
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

fail() {
  echo "packages: $*" >&2
  failed=1
}

cpack --config "$1/CPackConfig.cmake" -B "$work/made" >"$work/log" 2>&1 || {
  cat "$work/log" >&2
  exit 1
}
mkdir -p "$work/archive" "$work/installed/var/lib/dpkg"/{info,updates}
touch "$work/installed/var/lib/dpkg/status"
tar xf "$work"/made/*.tar.gz -C "$work/archive" --strip-components=1
dpkg --root="$work/installed" --force-not-root --force-bad-path --log=/dev/null \
  -i "$work"/made/*.deb >"$work/log" 2>&1 || fail "dpkg -i: $(<"$work/log")"

for there in "$work/archive" "$work/installed/usr"; do
  cd "$there"
  capdump() { env -i "$there/bin/capdump" "$@"; }
  [[ $(capdump --version | head -1) == "capdump "[0-9]* ]] || fail "$there: capdump --version"
  capdump --tree --hex - <"$root/samples/echo.pcap" | sed '1s/^-/echo.pcap/' |
    cmp "$root/tests/expected/echo.pcap.txt" - || fail "$there: a sample from standard input is shown otherwise"
  for option in $(capdump --help | grep -o '^ *--[a-z-]*'); do
    gzip -dc share/man/man1/capdump.1.gz | tr -d '\\' | grep -Fq -e "$option" || fail "$there: the manual has no $option"
  done
  bash -c 'source share/bash-completion/completions/capdump && COMP_WORDS=(capdump --foll) COMP_CWORD=1
    $(complete -p capdump | sed "s/.* -F \([^ ]*\).*/\1/") capdump --foll capdump && [[ ${COMPREPLY[*]} == --follow ]]' ||
    fail "$there: --foll is not completed"
done
diff <(cd "$work/archive" && find . -type f | sort) <(cd "$work/installed/usr" && find . -type f | sort) ||
  fail "the two packages do not hold the same"

exit $failed
