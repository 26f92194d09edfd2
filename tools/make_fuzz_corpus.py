#!/usr/bin/env python3
"""Makes the seeds of the fuzz targets from the sample captures.

Writes fuzz/corpus/{module,upper_layer,message,dictionary,capture,dataset}/. Seeds are kept small: of a long PDU
its first bytes do. Reads the captures through tcpdump, which knows both formats.

    tools/make_fuzz_corpus.py
"""
import pathlib
import struct
import subprocess
import zlib

ROOT = pathlib.Path(__file__).resolve().parent.parent
CORPUS = ROOT / "fuzz" / "corpus"
MOST_OF_A_PDU = 700
MOST_OF_A_SEED = 6000


def frames(capture):
    pcap = subprocess.run(["tcpdump", "-r", capture, "-w", "-"], check=True,
                          capture_output=True).stdout
    link_type = struct.unpack_from("<I", pcap, 20)[0]
    offset = 24
    while offset < len(pcap):
        size = struct.unpack_from("<I", pcap, offset + 8)[0]
        yield link_type, pcap[offset + 16:offset + 16 + size]
        offset += 16 + size


def streams(capture):
    """The payload of each direction of the first connection, in the order in which it was sent."""
    sent, ports = [], None
    for link_type, frame in frames(capture):
        ip = frame[{1: 14, 101: 0, 113: 16, 276: 20}[link_type]:]
        if ip[0] >> 4 != 4 or ip[9] != 6:  # not TCP over IPv4: ARP, for example
            continue
        length = struct.unpack_from(">H", ip, 2)[0]
        tcp = ip[4 * (ip[0] & 15):length]
        source, target = struct.unpack_from(">HH", tcp)
        ports = ports or (source, target)
        if {source, target} != set(ports):
            break
        payload = tcp[4 * (tcp[12] >> 4):]
        if payload:
            sent.append((int(source != ports[0]), payload))
    return sent


def pdus(capture):
    """(direction, PDU) in the order of their ends."""
    rest = {0: b"", 1: b""}
    for direction, payload in streams(capture):
        data = rest[direction] + payload
        while len(data) >= 6:
            size = struct.unpack_from(">I", data, 2)[0] + 6
            if len(data) < size:
                break
            yield direction, data[:size]
            data = data[size:]
        rest[direction] = data


def shorter(pdu):
    """The PDU cut, with its length fields (and that of its one PDV) made right."""
    if len(pdu) <= MOST_OF_A_PDU:
        return pdu
    cut = bytearray(pdu[:MOST_OF_A_PDU])
    struct.pack_into(">I", cut, 2, len(cut) - 6)
    if cut[0] == 4:
        struct.pack_into(">I", cut, 6, len(cut) - 10)
    return bytes(cut)


OPEN, SEND_BYTES, LIST, ACKNOWLEDGE = 0, 1, 9, 15  # operations of the module's target


def module_seed(capture):
    seed = bytes([OPEN])
    for direction, pdu in pdus(capture):
        pdu = shorter(pdu)
        if len(seed) + len(pdu) > MOST_OF_A_SEED:
            break
        # The third flag has the other side acknowledge.
        seed += bytes([SEND_BYTES | (direction | 4) << 5]) + struct.pack("<H", len(pdu)) + pdu
    fin = (1 << 1) << 5
    seed += bytes([ACKNOWLEDGE | fin, ACKNOWLEDGE | fin | 1 << 5, ACKNOWLEDGE])
    return seed + bytes([LIST, 4, 0])


SEND_RAW = 3 | 2 << 4  # of the capture's target; the other side acknowledges


def conversation_seed(capture, opened=1, harm=b"", most=MOST_OF_A_SEED):
    """The capture's PDUs; `harm` is done behind each of them."""
    looked_at_often = 1 << 1
    seed = bytes([1, opened | looked_at_often])
    for direction, pdu in pdus(capture):
        pdu = shorter(pdu)
        if len(seed) + len(pdu) > most:
            break
        for at in range(0, len(pdu), 255):
            piece = pdu[at:at + 255]
            seed += bytes([SEND_RAW | direction << 4, len(piece)]) + piece
        seed += harm
    swap, repeat, send_again = 7, 8, 9
    return seed + bytes([swap, 3, repeat, 5, send_again, 40, 0])


# What may happen to segments and bytes: lost, renumbered, other flags, another header, another
# byte, cut, never captured, another connection, closed, reset.
HARMS = {"drop": [10, 2], "renumber": [11 | 1 << 4, 2, 5], "flags": [12 | 1 << 4, 1, 0x12],
         "header": [12, 1, 3], "byte": [13 | 1 << 4, 2, 3, 0, 0], "cut": [13, 2, 20, 0],
         "lose": [14, 30, 0], "lose_much": [14 | 15 << 4, 255, 255],
         "another": [15 | 3 << 4, 1, 0], "close": [5], "reset": [5 | 2 << 4]}


def file_seed(capture):
    pace, piece = 3, 700
    return bytes([0, pace]) + struct.pack("<H", piece) + capture.read_bytes()[:MOST_OF_A_SEED]


def message_seeds(capture):
    """Context, command length, command set and data set, each PDV whole."""
    command, data = {}, {}
    for direction, pdu in pdus(capture):
        if pdu[0] != 4:
            continue
        offset = 6
        while offset + 6 <= len(pdu):
            size, _, control = struct.unpack_from(">IBB", pdu, offset)
            value = pdu[offset + 6:offset + 4 + size]
            offset += 4 + size
            if control & 1:
                command[direction] = value
                data[direction] = b""
                if control & 2:
                    yield bytes([0]) + struct.pack("<H", len(value)) + value
            else:
                data[direction] = (data.get(direction, b"") + value)[:MOST_OF_A_PDU]
                if control & 2:
                    head = command.get(direction, b"")
                    for context in range(4):
                        yield (bytes([context]) + struct.pack("<H", len(head)) + head +
                               data[direction])


def element(group, number, vr, value):
    """Explicit VR little endian; a sequence has an undefined length."""
    head = struct.pack("<HH", group, number) + vr
    if vr == b"SQ":
        end = struct.pack("<HHI", 0xFFFE, 0xE0DD, 0)
        return head + b"\0\0\xff\xff\xff\xff" + value + end
    if vr in (b"UN", b"OB", b"UT"):
        return head + struct.pack("<HI", 0, len(value)) + value
    return head + struct.pack("<H", len(value)) + value


def item(value, defined=True):
    size = len(value) if defined else 0xFFFFFFFF
    end = b"" if defined else struct.pack("<HHI", 0xFFFE, 0xE00D, 0)
    return struct.pack("<HHI", 0xFFFE, 0xE000, size) + value + end


def dataset_seeds():
    """One for each encoding, behind the byte that says which. The second names
    everything that a data set can hold, the fourth is it, deflated."""
    name = element(0x10, 0x10, b"PN", b"Yamada^Tarou=\x1b$B;3ED\x1b(B^\x1b$BB@O:\x1b(B")
    texts = element(8, 5, b"CS", b"\\ISO 2022 IR 87\\ISO 2022 IR 149 ") + name
    private = (element(9, 0x10, b"LO", b"GEMS_IDEN_01") +
               element(9, 0x1001, b"LO", b"x ") +
               element(9, 0x1099, b"UN", item(struct.pack("<HHI", 8, 5, 4) + b"GBK ")))
    offsets = struct.pack("<HHII", 0xFFFE, 0xE000, 4, 0)
    pixels = (struct.pack("<HH", 0x7FE0, 0x10) + b"OB\0\0\xff\xff\xff\xff" + offsets +
              item(b"\xff\xd8\xff\xd9") + struct.pack("<HHI", 0xFFFE, 0xE0DD, 0))
    numbers = (element(0x28, 0x103, b"US", b"\1\0") +
               element(0x28, 0x106, b"SS", b"\xff\xff") +
               element(0x18, 0x9328, b"FD", struct.pack("<d", 0.1)))
    dates = (element(8, 0x20, b"DA", b"20261121") + element(8, 0x2A, b"DT", b"2026112102+0100 ") +
             element(8, 0x30, b"TM", b"0224-03 "))
    whole = (texts[:-len(name)] + dates +
             element(8, 0x1140, b"SQ", item(private + numbers) + item(texts, False)) +
             name + pixels)
    deflate = zlib.compressobj(9, zlib.DEFLATED, -15)
    implicit = (struct.pack("<HHI", 8, 5, 10) + b"ISO_IR 192" +
                struct.pack("<HHI", 8, 0x1140, 0xFFFFFFFF) +
                item(struct.pack("<HHI", 8, 0x1150, 2) + b"1\0") +
                struct.pack("<HHI", 0xFFFE, 0xE0DD, 0))
    big = (struct.pack(">HH", 8, 5) + b"CS\0\nISO_IR 100" +
           struct.pack(">HH", 0x28, 0x10) + b"US\0\2\2\0")
    yield "implicit", b"\0" + implicit
    yield "explicit", b"\1" + whole
    yield "big", b"\2" + big
    yield "deflated", b"\3" + deflate.compress(whole) + deflate.flush()
    yield "judged", b"\x80" + whole


def write(target, name, seed):
    folder = CORPUS / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(seed)


VRS = "AE AS AT CS DA DS DT FL FD IS LO LT OB OW PN SH SL SQ SS ST TM UI UL US UT VS UN".split()


def hostile_message_seeds():
    """An element of each VR in each encoding; sequences in a row, and deep."""
    def elements(order, explicit):
        out = b""
        for number, vr in enumerate(VRS, 1):
            out += struct.pack(order + "HH", 8, number)
            if not explicit:
                out += struct.pack(order + "I", 8)
            elif vr in ("OB", "OW", "SQ"):
                out += vr.encode() + struct.pack(order + "HI", 0, 8)
            else:
                out += vr.encode() + struct.pack(order + "H", 8)
            out += b"12345678"
        return out
    sequence = struct.pack("<HH", 8, 0x12) + b"SQ\0\0\xff\xff\xff\xff"
    opened = struct.pack("<HHI", 0xFFFE, 0xE000, 0xFFFFFFFF)
    end = struct.pack("<HHI", 0xFFFE, 0xE0DD, 0)
    command = elements("<", False)
    yield "every-vr-implicit", b"\0\0\0" + command
    yield "every-vr-explicit", b"\1\0\0" + elements("<", True)
    yield "every-vr-big", b"\2\0\0" + elements(">", True)
    yield "every-vr-command", b"\3" + struct.pack("<H", len(command)) + command
    yield "sequences", b"\1\0\0" + (sequence + item(b"") + end) * 20
    yield "sequences-deep", b"\1\0\0" + (sequence + opened) * 200
    yield "items", b"\1\0\0" + sequence + (item(b"") + item(b"12345678")) * 50


def hostile_pdu_seeds():
    """Each item, with and in another one, whatever the PDU; with much behind it."""
    def tlv(kind, value):
        return struct.pack(">BBH", kind, 0, len(value)) + value
    def associate(kind, items):
        return b"\1" + struct.pack(">BBI", kind, 0, 68 + len(items)) + b"\0\1" + b"\0" * 66 + items
    syntax = tlv(0x40, b"1.2.840.10008.1.2")
    for kind in (0x10, 0x20, 0x21, 0x30, 0x40, 0x50, 0x51, 0x52, 0x53, 0x54, 0x55, 0x56, 0x99):
        one = tlv(kind, b"\1\0\0\0" + syntax)
        for pdu in (1, 2):
            yield f"item-{kind:02x}-of-{pdu}", associate(pdu, one + tlv(0x50, one) + syntax)
    for name, filler in ("wraps", 65000), ("nearly-wraps", 64900):
        rejected = tlv(0x21, b"\1\0\3\0" + b"\0" * filler)
        yield name, associate(2, rejected + tlv(0x21, b"\1\0\0\0" + syntax))


def hostile_module_seeds():
    """Other protocols, segments of one byte, odd TCP headers, a second handshake anywhere."""
    def send(direction, data, size=None):
        op = SEND_BYTES | (direction | 4 | (0 if size is None else 2)) << 5
        return bytes([op]) + struct.pack("<H", len(data)) + data + bytes([] if size is None else [size - 1])
    end = bytes([LIST, 4, 0])
    echo = struct.pack(">BBIIBB", 4, 0, 38, 34, 1, 3) + struct.pack(
        "<HHIIHHIHHHIH", 0, 0, 4, 20, 0, 0x100, 2, 0x30, 0, 0x110, 2, 7)
    data = struct.pack(">BBIIBB", 4, 0, 16, 12, 1, 2) + b"0123456789"
    release = struct.pack(">BBII", 5, 0, 4, 0)
    yield "other-protocols", bytes([OPEN]) + send(0, b"GET / HTTP/1.1\r\n\r\n") + send(
        1, b"\x16\3\1\2\0\1\0\1\xfc\3\3" + b"\t" * 200) + end
    yield "one-byte-segments", bytes([OPEN]) + send(0, echo + data + release, 1) + end
    yield "ten-byte-segments", bytes([OPEN]) + send(0, release + echo + data + data, 10) + end
    yield "data-first", bytes([OPEN]) + send(0, data + release + echo) + send(1, data) + end
    yield "many-small-pdus", bytes([OPEN]) + send(0, b"\7\0\0\0\0\0" * 500) + end
    skewed = b"".join(bytes([7, 0, 0, 0x10, words << 4, 20]) + b"\4" * 20 for words in range(16))
    yield "odd-headers", bytes([OPEN]) + skewed + end
    yield "two-handshakes", bytes([OPEN]) + send(0, echo) + bytes([OPEN]) + send(0, data) + end


def dictionary_seed():
    def some_lines(name):
        lines = (ROOT / "data" / name).read_text().splitlines()
        return "\n".join(lines[:5] + lines[::len(lines) // 20]) + "\n"
    return some_lines("Data.dic").encode() + b"\xff" + some_lines("Uid.dic").encode()


def main():
    seen = set()
    for capture in sorted((ROOT / "samples").glob("*.pcap*")):
        write("module", capture.stem, module_seed(capture))
        write("capture", capture.stem, conversation_seed(capture))
        write("capture", capture.name, file_seed(capture))
        for number, (_, pdu) in enumerate(pdus(capture)):
            seed = b"\1" + shorter(pdu)
            if seed[:8] + seed[74:] not in seen:
                seen.add(seed[:8] + seed[74:])
                if len([s for s in seen if s[:3] == seed[:3]]) <= 6:
                    write("upper_layer", f"{capture.stem}-{number}", seed)
        for number, seed in enumerate(message_seeds(capture)):
            if number < 8:
                write("message", f"{capture.stem}-{number}", seed)
    harmed = ROOT / "samples" / "find_worklist.pcapng"
    for name, harm in HARMS.items():
        write("capture", "harm-" + name, conversation_seed(harmed, 1, bytes(harm), 1500))
    write("capture", "harm-not-opened", conversation_seed(harmed, 0, bytes(HARMS["drop"]), 1500))
    for target, seeds in (("message", hostile_message_seeds()), ("module", hostile_module_seeds()),
                          ("upper_layer", hostile_pdu_seeds())):
        for name, seed in seeds:
            write(target, "hostile-" + name, seed)
    write("dictionary", "shipped", dictionary_seed())
    for name, seed in dataset_seeds():
        write("dataset", name, seed)


if __name__ == "__main__":
    main()
