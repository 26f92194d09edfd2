#!/bin/bash
# Runs capdump under Wine on every sample and compares what it prints with tests/expected/NAME.txt;
# then tries its other ways of output and its exit codes.
#
#   tests/end_to_end.sh [CAPDUMP.EXE]      build/win32/bin/capdump.exe unless named
#   tests/end_to_end.sh --update [...]     writes the expected texts anew
#
# An expected text says what is required, not what the program happens to print: after --update,
# read every changed line against the requirements before it is checked in.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
update=false
if [[ ${1-} == --update ]]; then
  update=true
  shift
fi
program=$(realpath "${1:-$root/build/win32/bin/capdump.exe}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$root/samples"  # the output begins with the name as it was given
failed=0

capdump() { "$root/tools/with-wine.sh" wine "$program" "$@" </dev/null; }

fail() {
  echo "end_to_end: $*" >&2
  failed=1
}

for sample in *.pcap *.pcapng; do
  show=(--tree --hex)
  # Images as hex digits are nothing to read.
  (($(stat -c %s "$sample") < 20000)) || show=(--tree --no-message-data)
  expected=$root/tests/expected/$sample.txt
  capdump "${show[@]}" "$sample" >"$work/text" || fail "$sample: exit code $?"
  if $update; then
    mkdir -p "$(dirname "$expected")"
    cp "$work/text" "$expected"
  else
    diff -u --label "expected/$sample.txt" --label "capdump ${show[*]} $sample" \
      "$expected" "$work/text" | head -40 || fail "$sample: the text differs"
  fi

  # The JSON holds the same rows and as many tree lines.
  capdump --json "${show[@]}" "$sample" >"$work/json"
  rows=$(jq -s '[.[] | select(.row)] | length' "$work/json")
  [[ $rows == $(grep -Ec '^ +[0-9]+  [0-9:.]+ .*(-->|<--) ' "$work/text") ]] ||
    fail "$sample: the JSON has $rows rows"
  lines=$(jq -s '[.[] | .. | objects | select(has("text"))] | length' "$work/json")
  [[ $lines == $(grep -c '^      \[' "$work/text") ]] ||
    fail "$sample: the JSON has $lines tree lines"
done

# expect CODE SENTENCE ARGUMENT...: the exit code, and a part of standard error
expect() {
  local code=0
  capdump "${@:3}" >"$work/out" 2>"$work/err" || code=$?
  [[ $code == "$1" ]] || fail "capdump ${*:3}: exit code $code, not $1"
  grep -Fq -- "$2" "$work/err" || fail "capdump ${*:3}: standard error has no \"$2\""
}
expect 2 "Name a capture file to read"
expect 2 'There is no option "--trees"' --trees echo.pcap
expect 2 'The filter "prot 1" is not understood' --filter "prot 1" echo.pcap
expect 2 "There is no connection 2 in this capture, which holds 1" --connection 2 echo.pcap
expect 2 "No list has a row 99" --row 99 echo.pcap
expect 1 "no_such.pcap" no_such.pcap
expect 1 "There is no module at" --module "$work/no.dll" echo.pcap
cp "$(dirname "$program")/DicomDecode.dll" "$work"
expect 1 "needs its dictionary Data.dic" --module "$work/DicomDecode.dll" echo.pcap
head -c 1500 echo.pcap >"$work/cut ü.pcap"
expect 1 "breaks off" "$work/cut ü.pcap"
grep -q "A-ASSOCIATE-AC PDU" "$work/out" || fail "what comes before the damage is not shown"

# A pipe and a compressed file are the capture that they bring.
for way in "cat echo.pcap" "gzip -c echo.pcap"; do
  $way | "$root/tools/with-wine.sh" wine "$program" --tree - >"$work/out" ||
    fail "$way: exit code $?"
  sed '1s/^-/echo.pcap/' "$work/out" | cmp -s - <(capdump --tree echo.pcap) ||
    fail "$way: the text differs"
done

# The host's saving mode: every line with at most one indentation, CR LF behind it.
capdump --save "$work/saved" --pdus --row 5 echo.pcap >/dev/null
printf '%s\r\n' "DICOM - Upper Layer Protokoll: A-RELEASE-RQ PDU (05h)" \
  "    PDU-Type: A-RELEASE-RQ (05h)" "    Reserved: 00h" "    PDU-Length: 00000004h, 4" \
  "    Reserved: 00000000h" | diff - "$work/saved" || fail "the saved decode differs"

exit $failed
