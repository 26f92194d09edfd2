#!/usr/bin/env python3
"""Makes a capture of the dearest association there is for its bytes.

  tools/make_overlapping_accept.py KILOBYTES OUT.pcap

In its accept each presentation context claims a transfer syntax of 65,535 bytes and is 265 bytes long, so
that the next one begins inside it and every line of the decode tree holds what the lines behind it hold
again. A release request follows, whose row has to be shown whatever became of the accept.
"""
import struct
import sys

from make_storage_capture import ADDRESSES, PORTS, associate, pdu

SEGMENT_BYTES = 1460
SYN, PUSH, ACK = 2, 8, 16
CONTEXT = bytes([0x21, 1, 1, 1, 1, 1, 1, 1, 0x40, 1, 0xFF, 0xFF]) + b"1" * 253


def accept(size):
    head = struct.pack(">Hxx", 1) + b"ARCHIVE".ljust(16) + b"SCANNER".ljust(16) + bytes(32)
    return pdu(2, head + CONTEXT * (size // len(CONTEXT)) + b"1" * 65535)


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    request = associate(1, 0x20, b"")
    sequences = [1000, 5000]
    frames = []

    def send(side, flags, payload=b""):
        tcp = struct.pack(">HHLLBBHHH", PORTS[side], PORTS[1 - side], sequences[side], sequences[1 - side],
                          0x50, flags, 8192, 0, 0) + payload
        ip = struct.pack(">BBHHHBBH", 0x45, 0, 20 + len(tcp), 0, 0, 64, 6, 0)
        frames.append(ip + ADDRESSES[side] + ADDRESSES[1 - side] + tcp)
        sequences[side] += len(payload) + (1 if flags & SYN else 0)

    send(0, SYN)
    send(1, SYN | ACK)
    send(0, ACK)
    for side, whole in ((0, request), (1, accept(int(sys.argv[1]) * 1000)), (0, pdu(5, bytes(4)))):
        for at in range(0, len(whole), SEGMENT_BYTES):
            send(side, PUSH | ACK, whole[at:at + SEGMENT_BYTES])
    with open(sys.argv[2], "wb") as file:
        file.write(struct.pack("<LHHLLLL", 0xA1B2C3D4, 2, 4, 0, 0, 262144, 101))
        for number, frame in enumerate(frames):
            file.write(struct.pack("<LLLL", 1700000000 + number // 1000, number % 1000 * 1000, len(frame), len(frame)))
            file.write(frame)


if __name__ == "__main__":
    main()
