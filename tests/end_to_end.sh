#!/bin/bash
# Runs capdump on every sample and compares what it prints with tests/expected/NAME.txt; then tries its
# other ways of output and its exit codes. A program whose name ends in .exe runs under Wine.
#
#   tests/end_to_end.sh [CAPDUMP [TWIN]]   build/win32/bin/capdump.exe unless named; all that a TWIN
#                                          prints and answers has to be the same byte for byte
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
twin=${2:+$(realpath "$2")}
[[ -z $twin || -e $twin ]] || {
  echo "end_to_end: there is no $twin to compare with: build it first" >&2
  exit 1
}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$root/samples"  # the output begins with the name as it was given
failed=0
exec 3>&2  # for what fails, wherever standard error goes

fail() {
  echo "end_to_end: $*" >&3
  failed=1
}

start() {  # PROGRAM ARGUMENT...
  if [[ $1 == *.exe ]]; then
    "$root/tools/with-wine.sh" wine "$@"
  else
    "$@"  # Wine starts it, too, and does not wait for its end
  fi
}

# run NAME PROGRAM ARGUMENT...: leaves NAME.out, NAME.err and NAME.code
run() {
  local code=0
  start "${@:2}" </dev/null >"$work/$1.out" 2>"$work/$1.err" || code=$?
  echo "$code" >"$work/$1.code"
}

capdump() {
  run program "$program" "$@"
  if [[ -n $twin ]]; then
    run twin "$twin" "$@"
    for part in out err code; do
      diff -u --label "$program" --label "$twin" "$work/program.$part" "$work/twin.$part" |
        head -10 >&3 || fail "capdump $*: the two programs differ"
    done
  fi
  cat "$work/program.out"
  cat "$work/program.err" >&2
  return "$(<"$work/program.code")"
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

  [[ -z $twin ]] || for options in "--all --as-captured" "--json --as-captured --hex" "--row 3 --tree" \
    "--findings" "--contexts" "--contexts --json" "--timing" "--csv" "--dump" "--dicom-json" \
    "--element 0008,0060"; do
    capdump $options "$sample" >"$work/any" 2>&1 || : # only compared
  done
done

# expect CODE SENTENCE ARGUMENT...: the exit code, and a part of standard error
expect() {
  local code=0
  capdump "${@:3}" >"$work/out" 2>"$work/err" || code=$?
  [[ $code == "$1" ]] || fail "capdump ${*:3}: exit code $code, not $1"
  [[ -z $2 ]] || grep -Fq -- "$2" "$work/err" || fail "capdump ${*:3}: standard error has no \"$2\""
}
expect 2 "Name a capture file to read"
expect 2 'There is no option "--trees"' --trees echo.pcap
expect 2 'The filter "prot 1" is not understood' --filter "prot 1" echo.pcap
expect 2 "There is no connection 2 in this capture, which holds 1" --connection 2 echo.pcap
expect 2 "There is no connection 2 in this capture, which holds 1" --pdus --connection 2 echo.pcap
expect 2 "No list has a row 99" --row 99 echo.pcap
expect 1 "no_such.pcap" no_such.pcap
head -c 1500 echo.pcap >"$work/cut ü.pcap"
expect 1 "breaks off" --pdus "$work/cut ü.pcap"
grep -q "A-ASSOCIATE-AC PDU" "$work/out" || fail "what comes before the damage is not shown"

# A pipe and a compressed file are the capture that they bring.
for way in "cat echo.pcap" "gzip -c echo.pcap"; do
  $way | start "$program" --tree - >"$work/out" || fail "$way: exit code $?"
  capdump --tree echo.pcap >"$work/text"
  sed '1s/^-/echo.pcap/' "$work/out" | diff -u "$work/text" - | head -10 >&3 ||
    fail "$way: the text differs"
done

# Rows of a pipe are there before it ends, and in the end the same as those of a file: with --follow those
# of a connection that goes on, without it those of one that has ended.
pipe_slowly() {  # BYTES PROGRAM OPTION...: of the capture the first BYTES at once
  { head -c "$1" "$work/both.pcap"; sleep 3; [[ ! -s $work/rows ]] || touch "$work/early"
    tail -c +$(($1 + 1)) "$work/both.pcap"; } | start "${@:2}" --json --tree - >"$work/rows"
}
# How long a message took is not known while its connection goes on.
rows_alone() {
  jq -c 'select(.kind == "pdu" or .kind == "message") |
    del(.first_time, .duration, .answered_after, .until_last_answer)' "$1" | sort
}
{ cat echo.pcap; tail -c +25 reject_called_aet.pcap; } >"$work/both.pcap"
capdump --json --tree "$work/both.pcap" >"$work/json"
rows_alone "$work/json" >"$work/text"
for each in "$program" ${twin:+"$twin"}; do
  for way in "1500 --follow" "$(stat -c %s echo.pcap)"; do
    rm -f "$work/rows" "$work/early"
    pipe_slowly ${way% *} "$each" $(cut -s -d' ' -f2 <<<"$way") || fail "a slow pipe: exit code $?"
    # Wine cannot say whether a pipe of its system has more: it waits inside for what follows an end.
    [[ -e $work/early || ($each == *.exe && $way != *follow) ]] || fail "$each $way shows nothing before the pipe ends"
    rows_alone "$work/rows" | cmp "$work/text" - || fail "$each $way: the rows of a slow pipe differ"
  done
done

# A capture shrinks while what was found in it is shown: one sentence, and what was shown before stays.
for each in "$program" ${twin:+"$twin"}; do
  cp store_multi_encaps.pcap "$work/shrinks.pcap"
  run shrinking "$each" --pdus --hex "$work/shrinks.pcap"
  rm -f "$work/code"
  { start "$each" --pdus --hex "$work/shrinks.pcap" 2>"$work/err" || echo $? >"$work/code"; } |
    { head -c 1000; truncate -s 1000 "$work/shrinks.pcap"; cat; } >"$work/out"
  [[ $(cat "$work/code" 2>&1) == 1 ]] || fail "$each: a capture that shrinks ends in exit code $(cat "$work/code" 2>&1)"
  [[ $(wc -l <"$work/err") == 1 ]] && grep -q "has become shorter while it was read: wait until" "$work/err" ||
    fail "$each says of a capture that shrinks: $(cat "$work/err")"
  cmp -n "$(stat -c %s "$work/out")" "$work/shrinking.out" "$work/out" || fail "$each: what was shown is not the same"
done

# A folder is one capture, from which parts can be taken: together they are the whole.
mkdir "$work/ring"
cp echo.pcap find_worklist.pcapng "$work/ring"
gzip -c store_explicit_le.pcap >"$work/ring/store"
expect 0 "" --json --tree "$work/ring"
grep -v '"kind":"finding"' "$work/out" | sort >"$work/whole"
[[ $(jq -r 'select(.kind == "pdu") | .first_file' "$work/whole" | sort -u | wc -l) == 3 ]] ||
  fail "frames do not name their files"
for part in 1/3 2/3 3/3; do
  capdump --json --tree --part "$part" "$work/ring" 2>"$work/err"
done | grep -v '"kind":"finding"' | sort | cmp "$work/whole" - || fail "the parts are not the whole"
cp ../README.md "$work/ring"
run skipping "$program" --pdus "$work/ring"
grep -q "README.md was skipped: it begins like no capture" "$work/skipping.err" ||
  fail "nothing says that a file was skipped"
expect 1 "no_such.pcap" --pdus echo.pcap no_such.pcap
grep -q "A-ASSOCIATE-AC PDU" "$work/out" || fail "a file that is not there stops the other"
capdump --pdus echo.pcap >"$work/text"
capdump --pdus "ech?.pcap" | cmp "$work/text" - || fail "a pattern is not expanded"

# What is wrong comes first, and scripts can ask for it.
expect 0 "" --check echo.pcap
grep -q "^No fault: 1 association" "$work/out" || fail "a healthy capture is not called so"
expect 3 "" --check reject_called_aet.pcap
sed -n 4p "$work/out" | grep -q "^FAULT .*rejected the association" || fail "the rejection is not first"
capdump --json reject_called_aet.pcap | head -1 | jq -e '.kind == "finding" and .severity == "fault"
  and .slug == "reject-called-ae-unknown"' >/dev/null || fail "the rejection is not the first object"

# The page for others holds every finding and no patient, whatever titles the peers have.
LC_ALL=C sed 's/ECHOSCU         /<script>alert(1)/; s/WRONG           /"><img src=xy>\x01\xFF/' \
  reject_called_aet.pcap >"$work/hostile.pcap"
for capture in *.pcap *.pcapng "$work/hostile.pcap"; do
  capdump --json "$capture" >"$work/json"
  capdump --element 0010,0010 --element 0010,0020 --element 0008,0018 --element 0000,1000 "$capture" >"$work/values"
  rm -f "$work/page.html" "$work/twin.html"
  run program "$program" --report "$work/page.html" "$capture"
  "$root/tests/check_page.py" "$work/page.html" "$work/json" "$work/values" 2>&3 || fail "the page of $capture"
  [[ -z $twin ]] || {
    run twin "$twin" --report "$work/twin.html" "$capture"
    cmp "$work/page.html" "$work/twin.html" >&3 || fail "the pages of $capture differ"
  }
done
grep -q '&lt;script&gt;alert(1)' "$work/page.html" || fail "the page does not show a hostile title"
expect 2 "name a file that ends in .html" --report "$work/hostile.pcap" echo.pcap

# The host's saving mode: every line with at most one indentation, CR LF behind it.
for each in "$program" ${twin:+"$twin"}; do
  run saving "$each" --save "$work/saved" --pdus --row 5 echo.pcap
  printf '%s\r\n' "DICOM - Upper Layer Protokoll: A-RELEASE-RQ PDU (05h)" \
    "    PDU-Type: A-RELEASE-RQ (05h)" "    Reserved: 00h" "    PDU-Length: 00000004h, 4" \
    "    Reserved: 00000000h" | diff - "$work/saved" || fail "what $each saves differs"
done

# The module, and then its dictionaries, are not where they belong.
if [[ $program == *.exe ]]; then
  expect 1 "There is no module at" --pdus --module "$work/no.dll" echo.pcap
  cp "$(dirname "$program")/DicomDecode.dll" "$work"
  expect 1 "needs its dictionary Data.dic" --pdus --module "$work/DicomDecode.dll" echo.pcap
else
  there=$(dirname "$program") twin=
  # A ring may have more files than a process may open unless it asks.
  (ulimit -Sn 5 && "$program" --json --tree "$work/ring" 2>"$work/err") | grep -v '"kind":"finding"' | sort |
    cmp "$work/whole" - || fail "many files are too many"
  mkdir -p "$work/usr/bin" "$work/usr/share"
  cp "$program" "$work/usr/bin"
  program=$work/usr/bin/capdump
  expect 1 "neither in $work/usr/bin nor in $work/usr/share/dicom-decode" --pdus echo.pcap
  mkdir "$work/usr/share/dicom-decode"
  cp "$there"/*.dic "$work/usr/share/dicom-decode"
  expect 0 "" --pdus echo.pcap
  expect 1 "leave --module out" --pdus --module DicomDecode.dll echo.pcap
fi

exit $failed
