#!/usr/bin/env -S python3 -B
"""Loads files that are made to cost time or memory, and prints what each cost.

Limits: 0.1 s and 64 MiB for a file of 64 KiB, 1.6 s and 512 MiB for one of 1 MiB, including the .vue file
beside the scene. Frames have a separate limit: 4,194,304 entries of 96 bytes, and 1.5 s. Exits with 1 if a
load exceeds a limit. The report callbacks do nothing.
"""
import argparse
import os
import struct
import subprocess
import sys
import tempfile

from chunks import (chunk, floats, frame_count, material, mesh, named_object, node, scene, text, u16, u32)

CLAIM = 0xFFFF
FRAME_MIB = 4194304 * 96 / 1048576
POINTS, FACES = chunk(0x4110, u16(CLAIM)), chunk(0x4120, u16(CLAIM))


def chunk_of_length(tag, length, *pieces):
    return struct.pack("<HI", tag, length) + b"".join(pieces)


def fill(size, piece):
    """Pieces up to the size: the same bytes each time, or made from the number of the piece."""
    if isinstance(piece, bytes):
        return piece * (size // len(piece))
    pieces, length, i = [], 0, 0
    while length < size:
        pieces.append(piece(i))
        length += len(pieces[-1])
        i += 1
    return b"".join(pieces)


def name(i):
    return "%x" % i


def plain_material(i):
    return material("m" + name(i), 1, ((1, 2, 3),) * 3, 0)


def objects(size):
    """Objects of six bytes each with the same name, and one more that only a full search finds."""
    return named_object("a", mesh() * ((size - 30) // 6)) + named_object("z", mesh())


def transform(of, number="1"):
    return ('transform "%s"%s\n' % (of, (" " + number) * 12)).encode()


def claims(piece):
    """Two cases: all pieces in one mesh, and a mesh for each piece."""
    return (lambda n: scene(named_object("a", mesh(fill(n, piece)))),
            lambda n: scene(fill(n, named_object("a", mesh(piece)))))


def pivots(n, one_node):
    """Pivots on a mesh whose vertices are the bytes after it. Empty pivot chunks read what follows them."""
    nodes = node("a", CLAIM, fill(n, chunk(0xB013))) if one_node else fill(n, node("a", CLAIM, chunk(0xB013)))
    return scene(named_object("a", mesh(POINTS)), nodes)


def far_maps(n):
    """Each map has a percentage that ends elsewhere in the file, and its name is searched there."""
    return scene(chunk(0xAFFF, fill(n, lambda i: chunk(0xA200, chunk_of_length(0x0030, far(12 * i, n))))))


def far(here, n):
    return n // 2 if here < n // 2 else max(6, n - here - 60)


def tree(n):
    return fill(n, lambda i: node("$$$DUMMY", max(0, i - 1)))


CASES = {
    "point arrays of 65,535 in one mesh": claims(POINTS)[0],
    "point arrays of 65,535, a mesh each": claims(POINTS)[1],
    "texture arrays of 65,535": claims(POINTS + chunk(0x4140, u16(CLAIM)))[0],
    "texture arrays of one point array": lambda n: scene(named_object("a", mesh(
        POINTS, fill(n, chunk(0x4140, u16(CLAIM)))))),
    "texture arrays of another count": lambda n: scene(named_object("a", mesh(
        fill(n, chunk(0x4140, u16(9)))))),
    "face arrays of 65,535 in one mesh": claims(FACES)[0],
    "face arrays of 65,535, a mesh each": claims(FACES)[1],
    "groups of 65,535 in one face array": lambda n: scene(named_object("a", mesh(chunk(
        0x4120, u16(CLAIM), fill(n, chunk(0x4130, text("m"), u16(CLAIM))))))),
    "groups of one face": lambda n: scene(named_object("a", mesh(chunk(
        0x4120, u16(1), u16(0, 0, 0, 0), fill(n, chunk(0x4130, text(""), u16(1, 0))))))),
    "a track behind the end of the file": lambda n: chunk_of_length(
        0x4D4D, 1 << 30, chunk(0x3D3D, named_object("a", mesh()), chunk(0x1234, bytes(n - 80))),
        chunk_of_length(0xB000, 1 << 29, chunk_of_length(
            0xB002, 1 << 28, chunk(0xB010, text("a"), u32(0), u16(CLAIM)),
            chunk_of_length(0xB020, 1 << 27, u16(0), u32(0, 0, n * 4 // 5))))),
    "tracks of a key each": lambda n: scene(named_object("a", mesh()), fill(n, lambda i: node(
        "a", CLAIM, chunk(0xB020, u16(0), u32(0, 0, 1), bytes(18))))),
    "named objects in named objects": lambda n: scene(b"".join(
        chunk_of_length(0x4000, n - 8 * i, text("a")) for i in range(n // 8))),
    "meshes in meshes": lambda n: scene(named_object("a", b"".join(
        chunk_of_length(0x4100, n - 6 * i) for i in range(n // 6)))),
    "empty chunks in the file": lambda n: chunk(0x4D4D, fill(n, chunk(0x1234))),
    "empty chunks in the editor section": lambda n: scene(fill(n, chunk(0x1234))),
    "empty chunks in a mesh": lambda n: scene(named_object("a", mesh(fill(n, chunk(0x1234))))),
    "empty named objects": lambda n: scene(fill(n, chunk(0x4000))),
    "empty nodes": lambda n: scene(b"", fill(n, chunk(0xB002))),
    "empty materials": lambda n: scene(fill(n, chunk(0xAFFF))),
    "empty maps in a material": lambda n: scene(chunk(0xAFFF, fill(n, chunk(0xA200)))),
    "empty meshes": lambda n: scene(objects(n)),
    "named meshes": lambda n: scene(fill(n, lambda i: named_object(name(i), mesh()))),
    "hidden meshes": lambda n: scene(fill(n, named_object("a", mesh(), chunk(0x4010)))),
    "names without an end": lambda n: scene(fill(n, chunk(0x4000, b"a" * 129))),
    "nodes of the last object": lambda n: scene(objects(n // 2), fill(n // 2, node("z", CLAIM))),
    "nodes of no object": lambda n: scene(objects(n // 2), fill(n // 2, node("n", CLAIM))),
    "nodes of named meshes, from the last on": lambda n: scene(
        fill(n // 3, lambda i: named_object(name(i), mesh())),
        fill(n * 2 // 3, lambda i: node(name(max(0, n // 57 - i)), CLAIM))),
    "dummies": lambda n: scene(b"", tree(n)),
    "dummies behind meshes": lambda n: scene(objects(n // 2), tree(n // 2)),
    "pivots on 65,535 vertices, in one node": lambda n: pivots(n, True),
    "pivots on 65,535 vertices, a node each": lambda n: pivots(n, False),
    "maps that point far away": far_maps,
    "materials and groups": lambda n: scene(fill(n // 2, plain_material) + named_object("a", mesh(chunk(
        0x4120, u16(1), u16(0, 0, 0, 0), fill(n // 2, chunk(0x4130, text("n"), u16(1, 0))))))),
    "materials": lambda n: scene(fill(n, plain_material)),
    "mesh matrices without inverse": lambda n: scene(fill(n, named_object("a", mesh(chunk(0x4160))))),
    ".vue records of unknown names": lambda n: (scene(objects(n // 2), frame_count(3)),
                                                b"frame 0\n" + fill(n // 2, transform("n"))),
    ".vue records of the last object": lambda n: (scene(objects(n // 2), frame_count(3)),
                                                  b"frame 0\n" + fill(n // 2, transform("z"))),
    ".vue records of frames outside": lambda n: (scene(objects(n // 2), frame_count(3)),
                                                 b"frame 9\n" + fill(n // 2, transform("a"))),
    ".vue with numbers of hundreds of digits": lambda n: (
        scene(objects(90), frame_count(3)), b"frame 0\n" + fill(n, transform("a", "1." + "9" * 248))),
    ".vue with numbers that are none": lambda n: (scene(objects(90), frame_count(3)), b"frame 0\n" + fill(
        n, b'transform "a" ' + b"x " * 999)),
    ".vue of keywords": lambda n: (scene(objects(90), frame_count(3)), fill(n, b"frame 1 ")),
    ".vue of comments": lambda n: (scene(objects(90), frame_count(3)), b'transform "a" ' + fill(n, b"# ")),
    ".vue of line ends": lambda n: (scene(objects(90), frame_count(3)), fill(n, b"\n")),
}


FRAME_CASES = {
    "2^32 - 1 frames": lambda n: (scene(objects(n), frame_count(0xFFFFFFFF)), b"\n"),
    "2^32 - 1 frames of no object": lambda n: (scene(b"", frame_count(0xFFFFFFFF)), b"\n"),
    "4,194,304 frames of one object": lambda n: (
        scene(named_object("a", mesh()), frame_count(4194303)), b"\n"),
    "as many of 1,000 objects": lambda n: (scene(objects(6000 + 30), frame_count(4189)), b"\n"),
    "as many of all objects": lambda n: (scene(objects(n), frame_count(4194304 // (n // 6) - 1)), b"\n"),
}


def cost(program, path, most_seconds):
    """Seconds and MiB of a load. A slow one is run up to three times, as other work may delay it."""
    seconds, mib = [], 0.0
    while len(seconds) < 3 and min(seconds, default=61) > most_seconds and max(seconds, default=0) < 60:
        try:
            run = subprocess.run([program, "1", path + ".out", "load", path], check=True, capture_output=True,
                                 text=True, timeout=60)
        except subprocess.TimeoutExpired:
            return 60.0, mib
        words = run.stdout.split()
        seconds.append(float(words[-3]))
        mib = max(mib, int(words[-1]) / 1024)
    return min(seconds), mib


def load(program, case, data, most_seconds, most_mib):
    """Prints the row of a file. True if its load is within the bounds."""
    data, vue = data if isinstance(data, tuple) else (data, b"")
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "bad.3DS")
        with open(path, "wb") as file:
            file.write(data)
        if vue:
            with open(path[:-3] + "vue", "wb") as file:
                file.write(vue)
        seconds, mib = cost(program, path, most_seconds)
    kept = seconds <= most_seconds and mib <= most_mib
    print("| %s | %.0f KiB | %.4f s | %.1f MiB | %s |" % (
        case, (len(data) + len(vue)) / 1024, seconds, mib, "kept" if kept else "EXCEEDED"), flush=True)
    return kept


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("build", help="the folder of an optimised build")
    parser.add_argument("--only", default="", help="cases that have this in their names")
    options = parser.parse_args()
    program = os.path.join(options.build, "bench", "mc3ds_measure")
    failed = False
    print("| File | Size | Time | Memory | |\n| --- | --- | --- | --- | --- |")
    for size, most_seconds, most_mib in ((1 << 16, 0.1, 64), (1 << 20, 1.6, 512)):
        room = size - 256  # for the enclosing chunks
        for case, make in CASES.items():
            if options.only in case:
                failed |= not load(program, case, make(room), most_seconds, most_mib)
        for case, make in FRAME_CASES.items():
            if options.only in case:
                failed |= not load(program, case, make(room), 1.5, FRAME_MIB + most_mib)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
