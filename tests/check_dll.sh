#!/bin/bash
# Checks what hosts and Windows see of the DLL: exports, imports, flags, version, no timestamp.
#   tests/check_dll.sh DicomDecode.dll
set -euo pipefail
dll=$1
headers=$(i686-w64-mingw32-objdump -p "$dll")

fail() {
  echo "check_dll.sh: $1" >&2
  exit 1
}

grep -q 'file format pei-i386' <<<"$headers" || fail "not a 32-bit Windows image"

exports=$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] //p' <<<"$headers" | sort)
expected=$(printf '%s\n' ClearDicomDisplay DicomDeRegisterParent DicomPacketCaptureStart \
  DicomRegisterParent DisplayDicomPacket GetDicomDllVersion GetDicomPacketList PrintDicomDecode \
  RefreshDicomDecode SaveDicomDecodeToFile)
[[ $exports == "$expected" ]] || fail "exports are: $exports"

imports=$(sed -n 's/.*DLL Name: //p' <<<"$headers" | tr 'A-Z' 'a-z' | sort | tr '\n' ' ')
[[ $imports == "gdi32.dll kernel32.dll msvcrt.dll user32.dll " ]] || fail "imports are: $imports"

grep -qi 'DllCharacteristics[[:space:]]*00000140' <<<"$headers" ||
  fail "dynamic base and NX are not both set"
grep -q '^Time/Date[[:space:]].*1970$' <<<"$headers" || fail "the image has a timestamp"
grep -q 'Time/Date stamp[[:space:]]*0$' <<<"$headers" || fail "the export table has a timestamp"
i686-w64-mingw32-objdump -h "$dll" | grep -q '\.rsrc' || fail "no version resource"
for path in '.\Data.dic' '.\Uid.dic'; do
  grep -qF "$path" "$dll" || fail "it does not open $path"
done
echo "the DLL is as hosts expect it"
