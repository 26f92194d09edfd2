#!/bin/bash
# Records the samples anew:
#
#   tools/record-samples.sh FOLDER     writes the six captures there; never over an existing one
#
# echo.pcap               verification: the smallest association that carries a message
# store_explicit_le.pcap  C-STORE of a small 8-bit image, explicit VR little endian; the data set
#                         is cut by several segments
# find_worklist.pcapng    two worklist C-FINDs whose answers hold nested sequences; several PDUs in
#                         one segment; the pcapng format
# reject_called_aet.pcap  two associations rejected, by two kinds of peer: the called AE title is
#                         not recognized
# abort_scu.pcap          three associations aborted by the requestor: two verifications, one C-STORE
# store_multi_encaps.pcap eight images with several encapsulated transfer syntaxes in one association
#
# The peers are DCMTK's. Server (192.0.2.1) and client (192.0.2.2) run in network namespaces of
# their own, joined by a virtual wire with an MTU of 1500. All offload is off, so that the capture
# holds what a real wire would: segments of at most 1460 bytes with right checksums. Needs root.
set -euo pipefail

if [ $# != 1 ]; then
  echo "record-samples: name the folder that the captures go to" >&2
  exit 2
fi
mkdir -p "$1"
out=$(cd "$1" && pwd)

install_tools() {
  local missing=()
  command -v storescu >/dev/null && command -v wlmscpfs >/dev/null || missing+=(dcmtk)
  command -v tcpdump >/dev/null || missing+=(tcpdump)
  command -v ip >/dev/null || missing+=(iproute2)
  command -v ethtool >/dev/null || missing+=(ethtool)
  command -v editcap >/dev/null || missing+=(wireshark-common)
  [ ${#missing[@]} = 0 ] && return
  apt-get update -qq || true
  DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends "${missing[@]}" \
    >/dev/null
}

server_ns=dicom-server-$$
client_ns=dicom-client-$$
work=$(mktemp -d)
servers=()

# Programs in the background are started by `ip netns exec` itself, which becomes the program: so
# their process is the one to end.
clean_up() {
  if [ ${#servers[@]} != 0 ]; then kill "${servers[@]}" 2>/dev/null || true; fi
  ip netns del "$server_ns" 2>/dev/null || true
  ip netns del "$client_ns" 2>/dev/null || true
  rm -rf "$work"
}

on_server() { ip netns exec "$server_ns" "$@"; }
on_client() { ip netns exec "$client_ns" "$@"; }

lay_wire() {
  ip netns add "$server_ns"
  ip netns add "$client_ns"
  ip link add wire0 netns "$server_ns" type veth peer name wire0 netns "$client_ns"
  local namespace number=1
  for namespace in "$server_ns" "$client_ns"; do
    ip -n "$namespace" link set lo up
    ip -n "$namespace" address add "192.0.2.$number/24" dev wire0
    ip -n "$namespace" link set wire0 up
    ip netns exec "$namespace" ethtool -K wire0 tx off rx off tso off gso off gro off >/dev/null
    number=$((number + 1))
  done
}

# serve PORT COMMAND...: starts a server and waits until it listens.
serve() {
  local port=$1 try
  shift
  ip netns exec "$server_ns" "$@" >>"$work/server.log" 2>&1 &
  servers+=($!)
  for try in $(seq 50); do
    on_server ss -Hltn "sport = :$port" | grep -q LISTEN && return
    sleep 0.1
  done
  cat "$work/server.log" >&2
  echo "record-samples: $1 does not listen on port $port" >&2
  exit 1
}

# record NAME FUNCTION: captures on the client's side while FUNCTION runs.
record() {
  local name=$1 file=$work/$1.recorded capture try
  if [ -e "$out/$name" ]; then
    echo "record-samples: $out/$name exists already, give another folder" >&2
    exit 1
  fi
  ip netns exec "$client_ns" tcpdump -i wire0 -Z root --immediate-mode -U -w "$file" tcp 2>"$work/tcpdump.log" &
  capture=$!
  for try in $(seq 50); do
    grep -q 'listening on' "$work/tcpdump.log" && break
    sleep 0.1
  done
  "$2" >>"$work/client.log" 2>&1 || {
    cat "$work/client.log" >&2
    echo "record-samples: $2 failed, see above" >&2
    exit 1
  }
  sleep 0.5
  kill "$capture"
  wait "$capture" || true
  case $name in
    *.pcapng) editcap -F pcapng "$file" "$out/$name" ;;
    *) cp "$file" "$out/$name" ;;
  esac
  echo "$name: $(tcpdump -nr "$out/$name" 2>/dev/null | wc -l) frames"
}

# image NAME ROWS COLUMNS NUMBER: an 8-bit grey image with a pattern.
image() {
  local name=$1 rows=$2 columns=$3 number=$4
  perl -e 'my ($r, $c, $n) = @ARGV;
           for my $y (0 .. $r - 1) { for my $x (0 .. $c - 1) {
             print pack("C", ($x * 2 + $y + $n * (($x ^ $y) & 7)) & 255) } }' \
    "$rows" "$columns" "$number" >"$work/$name.raw"
  cat >"$work/$name.dump" <<END
(0008,0016) UI [1.2.840.10008.5.1.4.1.1.7]
(0008,0018) UI [2.25.31415926.1.$number]
(0008,0020) DA [20240229]
(0008,0030) TM [101530]
(0008,0060) CS [OT]
(0008,0064) CS [WSD]
(0008,0090) PN [Referring^Physician]
(0010,0010) PN [Sample^Patient^$number]
(0010,0020) LO [ID-$number]
(0010,0030) DA [19700101]
(0010,0040) CS [O]
(0020,000d) UI [2.25.31415926.2]
(0020,000e) UI [2.25.31415926.3]
(0020,0010) SH [STUDY-1]
(0020,0011) IS [1]
(0020,0013) IS [$number]
(0028,0002) US 1
(0028,0004) CS [MONOCHROME2]
(0028,0010) US $rows
(0028,0011) US $columns
(0028,0100) US 8
(0028,0101) US 8
(0028,0102) US 7
(0028,0103) US 0
(7fe0,0010) OB =$work/$name.raw
END
  dump2dcm +te "$work/$name.dump" "$work/$name.dcm"
}

# worklist_item NUMBER MODALITY: a scheduled procedure with nested sequences.
worklist_item() {
  cat >"$work/item.dump" <<END
(0008,0050) SH [ACC-$1]
(0008,0090) PN [Referring^Physician]
(0010,0010) PN [Worklist^Patient^$1]
(0010,0020) LO [WL-$1]
(0010,0030) DA [19600615]
(0010,0040) CS [F]
(0020,000d) UI [2.25.31415926.5.$1]
(0032,1060) LO [Procedure $1]
(0040,0100) SQ
(fffe,e000) na
(0008,0060) CS [$2]
(0040,0001) AE [STATION]
(0040,0002) DA [20240301]
(0040,0003) TM [0930]
(0040,0006) PN [Performing^Physician]
(0040,0007) LO [Step of procedure $1]
(0040,0008) SQ
(fffe,e000) na
(0008,0100) SH [CODE-$1]
(0008,0102) SH [99LOCAL]
(0008,0104) LO [Protocol $1]
(fffe,e00d) na
(fffe,e0dd) na
(0040,0009) SH [SPS-$1]
(fffe,e00d) na
(fffe,e0dd) na
(0040,1001) SH [RP-$1]
END
  dump2dcm +te "$work/item.dump" "$work/worklist/WORKLIST/item$1.wl"
}

make_objects() {
  local number
  image small 64 64 1
  mkdir "$work/encaps"
  for number in 2 3 4 5 6 7 8 9; do
    image "plain$number" 96 $((80 + 8 * number)) "$number"
  done
  dcmcrle "$work/plain2.dcm" "$work/encaps/2.dcm"
  dcmcrle "$work/plain3.dcm" "$work/encaps/3.dcm"
  dcmcjpeg +eb "$work/plain4.dcm" "$work/encaps/4.dcm"
  dcmcjpeg +eb "$work/plain5.dcm" "$work/encaps/5.dcm"
  dcmcjpeg +e1 "$work/plain6.dcm" "$work/encaps/6.dcm"
  dcmcjpeg +e1 "$work/plain7.dcm" "$work/encaps/7.dcm"
  dcmcjpls +el "$work/plain8.dcm" "$work/encaps/8.dcm"
  dcmcjpls +en "$work/plain9.dcm" "$work/encaps/9.dcm"
  mkdir -p "$work/worklist/WORKLIST" "$work/received" "$work/archive"
  touch "$work/worklist/WORKLIST/lockfile"
  for number in 1 2 3; do worklist_item "$number" CT; done
  worklist_item 4 MR
  cat >"$work/archive.cfg" <<END
NetworkTCPPort = 4242
MaxPDUSize = 16384
MaxAssociations = 4
HostTable BEGIN
HostTable END
VendorTable BEGIN
VendorTable END
AETable BEGIN
ARCHIVE $work/archive RW (10, 64mb) ANY
AETable END
END
}

start_servers() {
  serve 11112 storescp +xa -od "$work/received" 11112
  serve 11113 wlmscpfs -dfp "$work/worklist" 11113
  serve 11115 wlmscpfs -dfp "$work/worklist" 11115
  serve 4242 dcmqrscp -c "$work/archive.cfg" 4242
}

record_echo() { on_client echoscu 192.0.2.1 11112; }
record_store() { on_client storescu -R -xe 192.0.2.1 11112 "$work/small.dcm"; }
record_find() {
  local keys=(-k 0010,0010 -k 0010,0020 -k 0020,000d -k 0032,1060
              -k "0040,0100[0].0040,0001" -k "0040,0100[0].0040,0002"
              -k "0040,0100[0].0040,0003" -k "0040,0100[0].0040,0007"
              -k "0040,0100[0].0040,0008[0].0008,0100"
              -k "0040,0100[0].0040,0008[0].0008,0104")
  on_client findscu -W -aec WORKLIST "${keys[@]}" -k "0040,0100[0].0008,0060=CT" 192.0.2.1 11115
  on_client findscu -W -aec WORKLIST "${keys[@]}" -k "0040,0100[0].0008,0060=MR" 192.0.2.1 11115
}
record_reject() {  # the peers say no, which is a failure to the client
  ! on_client echoscu -aec NOBODY 192.0.2.1 11113
  ! on_client echoscu -aec NOBODY 192.0.2.1 4242
}
record_abort() {
  on_client echoscu --abort 192.0.2.1 11112
  on_client storescu --abort -R -xe 192.0.2.1 11112 "$work/small.dcm"
  on_client echoscu --abort -aet OTHER 192.0.2.1 11112
}
record_encaps() { on_client dcmsend -dn 192.0.2.1 11112 "$work"/encaps/*.dcm; }

install_tools
trap clean_up EXIT
make_objects
lay_wire
start_servers
record echo.pcap record_echo
record store_explicit_le.pcap record_store
record find_worklist.pcapng record_find
record reject_called_aet.pcap record_reject
record abort_scu.pcap record_abort
record store_multi_encaps.pcap record_encaps
