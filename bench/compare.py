#!/usr/bin/env python3
"""Compares capdump with what else reads captures, and with itself: prints medians and ratios.

  bench/compare.py [MEGABYTES [RUNS [LARGE]]]     200 and 5 unless given; for figures nothing else may run

With LARGE, as 4500, a capture of so many megabytes is read as well.

Wants build/linux/bin/capdump; build/win32/bin/capdump.exe and tshark are measured when they are there. The
captures are made in a folder for temporary files. Nothing is asserted: the aims stand beside the ratios.
"""
import os
import pathlib
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
NATIVE = ROOT / "build/linux/bin/capdump"
WINDOWS = ROOT / "build/win32/bin/capdump.exe"
WINE = [ROOT / "tools/with-wine.sh", "wine"]
IMAGES = ROOT / "samples/store_multi_encaps.pcap"


def run_once(commands):
    """Wall seconds, the largest peak in MiB and the exit codes of processes that run side by side."""
    begin = time.monotonic()
    processes = [subprocess.Popen([str(word) for word in command], stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL) for command in commands]
    peak, codes = 0, []
    for process in processes:
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        peak = max(peak, usage.ru_maxrss / 1024)
        codes.append(process.returncode)
    return time.monotonic() - begin, peak, codes


class Bench:
    def __init__(self, runs):
        self.runs = runs

    def row(self, what, *commands):
        """Prints one measurement and answers its median wall time; None when a program is not there."""
        if not all(shutil.which(str(command[0])) for command in commands):
            print(f"{what:58} not here")
            return None
        results = [run_once(commands) for _ in range(self.runs)]
        wall = statistics.median(result[0] for result in results)
        peak = statistics.median(result[1] for result in results)
        print(f"{what:58} {wall:8.3f} s {peak:8.1f} MiB  exit {results[-1][2]}", flush=True)
        return wall

    @staticmethod
    def ratio(what, one, other, aim):
        if one and other:
            print(f"    {what}: {one / other:.3f} (aim: at most {aim})")


def windows(*arguments):
    return [*WINE, WINDOWS, *arguments] if WINDOWS.exists() else ["no-capdump.exe"]


def repeat_images(path, megabytes):
    """The sample with images again and again, each time an hour later and from another port."""
    data = IMAGES.read_bytes()
    with open(path, "wb") as out:
        out.write(data[:24])
        for copy in range(megabytes * 1_000_000 // len(data) + 1):
            at = 24
            while at + 16 <= len(data):
                seconds, fraction, size, wire = struct.unpack_from("<LLLL", data, at)
                frame = bytearray(data[at + 16:at + 16 + size])
                if frame[12:14] == b"\x08\x00" and frame[23] == 6:
                    tcp = 14 + (frame[14] & 15) * 4
                    ports = list(struct.unpack_from(">HH", frame, tcp))
                    client = 0 if ports[0] > ports[1] else 1
                    ports[client] = 20000 + (ports[client] + 11 * copy) % 40000
                    struct.pack_into(">HH", frame, tcp, *ports)
                out.write(struct.pack("<LLLL", seconds + 3600 * copy, fraction, size, wire) + frame)
                at += 16 + size


def make_storage(path, megabytes):
    subprocess.run([ROOT / "tools/make_storage_capture.py", str(megabytes), path], check=True)


def compare_reading(bench, folder, megabytes):
    one, two = folder / "storage.pcap", folder / "twice.pcap"
    make_storage(one, megabytes)
    make_storage(two, 2 * megabytes)
    print(f"reading {megabytes} MB of storage traffic")
    native = bench.row("capdump --messages", [NATIVE, "--messages", one])
    doubled = bench.row("capdump --messages, twice the traffic", [NATIVE, "--messages", two])
    tshark = bench.row("tshark -Y dicom", ["tshark", "-r", one, "-Y", "dicom"])
    wine = bench.row("capdump.exe --messages under Wine", windows("--messages", one))
    bench.ratio("capdump of tshark", native, tshark, 0.12)
    bench.ratio("capdump.exe of tshark", wine, tshark, 0.30)
    bench.ratio("growth for twice the traffic", doubled, native, 2.1)


def compare_large(bench, folder, megabytes):
    large = folder / "large.pcap"
    make_storage(large, megabytes)
    print(f"reading {megabytes} MB of storage traffic (aim: at most 12 s and 400 MB for 4500)")
    bench.row("capdump --messages", [NATIVE, "--messages", large])
    large.unlink()


def compare_images(bench, folder, megabytes):
    images = folder / "images.pcap"
    repeat_images(images, megabytes)
    print(f"{megabytes} MB of images as JSON")
    json = ["--json", "--tree", images]
    whole = bench.row("capdump --json --tree", [NATIVE, *json])
    parts = bench.row("the same by two processes, each with its --part",
                      *([NATIVE, "--part", f"{part}/2", *json] for part in (1, 2)))
    tshark = bench.row("tshark -T json", ["tshark", "-r", images, "-Y", "dicom", "-T", "json"])
    bench.ratio("capdump of tshark", whole, tshark, 0.5)
    bench.ratio("two processes of one", parts, whole, 0.6)


def compare_dearest(bench, folder, kilobytes):
    accept = folder / "accept.pcap"
    subprocess.run([ROOT / "tools/make_overlapping_accept.py", str(kilobytes), accept], check=True)
    print(f"an accept of {kilobytes} KB whose items overlap: a program must end by itself (exit 0 or 1)")
    bench.row("capdump --pdus --tree", [NATIVE, "--pdus", "--tree", accept])
    bench.row("capdump.exe --pdus --tree under Wine", windows("--pdus", "--tree", accept))


def main():
    megabytes = int(sys.argv[1]) if len(sys.argv) > 1 else 200
    bench = Bench(int(sys.argv[2]) if len(sys.argv) > 2 else 5)
    if not NATIVE.exists():
        sys.exit("compare.py: build it first: cmake --preset linux && cmake --build --preset linux")
    print(f"medians of {bench.runs}")
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        compare_reading(bench, folder, megabytes)
        compare_images(bench, folder, max(megabytes // 4, 1))
        if len(sys.argv) > 3:
            compare_large(bench, folder, int(sys.argv[3]))
        for kilobytes in (megabytes * 5, megabytes * 20):
            compare_dearest(bench, folder, kilobytes)


if __name__ == "__main__":
    main()
