#!/usr/bin/env python3
"""Makes a capture of storage traffic of any size, to measure with.

  tools/make_storage_capture.py MEGABYTES OUT.pcap [--retransmitted PERCENT] [--early PERCENT]

One association stores message after message: a command set, then 16 PDUs of
16,060 bytes in segments of 1,460 bytes, so that no segment's end cuts a header.
Every second segment is acknowledged and every message answered. On demand some
segments come twice, or before the one that they follow. The same arguments give
the same file.
"""
import argparse
import random
import struct

SEGMENT_BYTES = 1460
PDUS_PER_MESSAGE = 16
PDU_BYTES = 16060  # eleven segments
SYN, PUSH, ACK, FIN = 2, 8, 16, 1
ADDRESSES = (bytes([192, 0, 2, 1]), bytes([192, 0, 2, 2]))
PORTS = (49200, 104)
CT_IMAGE_STORAGE = b"1.2.840.10008.5.1.4.1.1.2\0"
IMPLICIT_LITTLE_ENDIAN = b"1.2.840.10008.1.2"


def item(item_type, content):
    return struct.pack(">BxH", item_type, len(content)) + content


def pdu(pdu_type, content):
    return struct.pack(">BxL", pdu_type, len(content)) + content


def associate(pdu_type, context_type, context_syntaxes):
    context = struct.pack("4B", 1, 0, 0, 0) + context_syntaxes
    user = item(0x51, struct.pack(">L", PDU_BYTES - 6))
    user += item(0x52, b"1.2.826.0.1.3680043.2.1143.1")
    items = item(0x10, b"1.2.840.10008.3.1.1.1")
    items += item(context_type, context) + item(0x50, user)
    titles = b"ARCHIVE".ljust(16) + b"SCANNER".ljust(16)
    return pdu(pdu_type, struct.pack(">Hxx", 1) + titles + bytes(32) + items)


def element(group, number, value):
    return struct.pack("<HHL", group, number, len(value)) + value


def command_set(field, message_id, size=None):
    """`size` fills it up with an offending-element list, so that the PDU fills
    its segment."""
    answer = field & 0x8000
    body = element(0, 0x0002, CT_IMAGE_STORAGE)
    body += element(0, 0x0100, struct.pack("<H", field))
    body += element(0, 0x0120 if answer else 0x0110, struct.pack("<H", message_id))
    body += element(0, 0x0800, struct.pack("<H", 0x0101 if answer else 1))
    if answer:
        body += element(0, 0x0900, struct.pack("<H", 0))
    if size is not None:
        body += element(0, 0x0902, b" " * (size - len(body) - 20))
    return element(0, 0x0000, struct.pack("<L", len(body))) + body


def p_data(control, value):
    return pdu(4, struct.pack(">LBB", len(value) + 2, 1, control) + value)


def checksum(data):
    if len(data) % 2:
        data += b"\0"
    total = sum(struct.unpack(f">{len(data) // 2}H", data))
    while total >> 16:
        total = (total & 0xFFFF) + (total >> 16)
    return ~total & 0xFFFF


class Capture:
    def __init__(self, out, retransmitted, early):
        self.out = out
        self.random = random.Random(1)
        self.retransmitted = retransmitted / 100
        self.early = early / 100
        self.clock = 1_800_000_000_000_000  # us
        self.next = [1000, 2_000_000]  # sequence numbers
        self.held = None  # a segment that its follower overtakes
        self.bytes = out.write(
            struct.pack("<LHHlLLL", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101))

    def frame(self, direction, flags, payload=b""):
        sequence, acknowledged = self.next[direction], self.next[1 - direction]
        self.next[direction] += len(payload) + bool(flags & (SYN | FIN))
        tcp = struct.pack(
            ">HHLLBBHHH", PORTS[direction], PORTS[1 - direction],
            sequence & 0xFFFFFFFF, acknowledged & 0xFFFFFFFF if flags & ACK else 0,
            5 << 4, flags, 0xFFFF, 0, 0)
        ip = struct.pack(">BBHHHBBH4s4s", 0x45, 0, 40 + len(payload), 0, 0x4000, 64, 6,
                         0, ADDRESSES[direction], ADDRESSES[1 - direction])
        return ip[:10] + struct.pack(">H", checksum(ip)) + ip[12:] + tcp + payload

    def write(self, frame):
        self.clock += 11
        self.bytes += self.out.write(
            struct.pack("<LLLL", *divmod(self.clock, 1_000_000), len(frame),
                        len(frame)) + frame)

    def bare(self, direction, flags):
        self.write(self.frame(direction, flags))

    def send(self, direction, message):
        for at in range(0, len(message), SEGMENT_BYTES):
            self.segment(direction, message[at:at + SEGMENT_BYTES])
            if at // SEGMENT_BYTES % 2:
                self.bare(1 - direction, ACK)
        self.bare(1 - direction, ACK)

    def segment(self, direction, payload):
        frame = self.frame(direction, PUSH | ACK, payload)
        if self.held is None and self.random.random() < self.early:
            self.held = frame
            return
        self.write(frame)
        if self.held is not None:
            self.write(self.held)
            self.held = None
        if self.random.random() < self.retransmitted:
            self.write(frame)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("megabytes", type=int)
    parser.add_argument("out")
    parser.add_argument("--retransmitted", type=float, default=0, metavar="PERCENT")
    parser.add_argument("--early", type=float, default=0, metavar="PERCENT")
    options = parser.parse_args()
    with open(options.out, "wb", 1 << 20) as out:
        capture = Capture(out, options.retransmitted, options.early)
        capture.bare(0, SYN)
        capture.bare(1, SYN | ACK)
        capture.bare(0, ACK)
        proposed = item(0x30, CT_IMAGE_STORAGE[:-1]) + item(0x40, IMPLICIT_LITTLE_ENDIAN)
        capture.send(0, associate(1, 0x20, proposed))
        capture.send(1, associate(2, 0x21, item(0x40, IMPLICIT_LITTLE_ENDIAN)))
        modality = element(0x0008, 0x0060, b"CT")
        room = PDUS_PER_MESSAGE * (PDU_BYTES - 12) - len(modality) - 8
        data_set = modality + element(0x7FE0, 0x0010, random.Random(2).randbytes(room))
        parts = [data_set[at:at + PDU_BYTES - 12]
                 for at in range(0, len(data_set), PDU_BYTES - 12)]
        message_id = 0
        while capture.bytes < options.megabytes << 20:
            message_id = message_id % 0xFFFF + 1
            capture.send(0, p_data(3, command_set(1, message_id, SEGMENT_BYTES - 12)))
            for part in parts:
                capture.send(0, p_data(2 if part is parts[-1] else 0, part))
            capture.send(1, p_data(3, command_set(0x8001, message_id)))
        capture.send(0, pdu(5, bytes(4)))
        capture.send(1, pdu(6, bytes(4)))
        capture.bare(0, FIN | ACK)
        capture.bare(1, FIN | ACK)
        capture.bare(0, ACK)


if __name__ == "__main__":
    main()
