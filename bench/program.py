#!/usr/bin/env -S python3 -B
"""Times the program beside the library, one worker beside two, and a picture that costs as much as it can.

Needs about 3 GB in FOLDER, which should be in memory, strace, and two idle cores. Prints a table. With
--strict exits with 1 if a limit is exceeded.
"""
import argparse
import os
import pathlib
import re
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

from chunks import chunk, floats, material, named_object, scene, text, u16
from timings import Timings

LIBRARY_LIMITS = {"big": (1.10, 1.05), "many": (1.25, 1.10)}
SMALL_SCENES = 1240


class Program(Timings):
    def __init__(self, options, folder):
        super().__init__(options, folder)
        self.program = os.path.join(options.build, "host", "3ds2mcx")

    def once(self, *words):
        """Wall-clock and processor seconds of one run. Outputs of earlier runs are deleted first."""
        for name in ("program.mcx", "out.mcx", "out.png"):
            pathlib.Path(self.path(name)).unlink(missing_ok=True)
        shutil.rmtree(self.path("converted"), ignore_errors=True)
        before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.perf_counter()
        subprocess.run([self.program, *words], check=True, capture_output=True, cwd=self.folder)
        wall, after = time.perf_counter() - start, resource.getrusage(resource.RUSAGE_CHILDREN)
        return wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime

    def medians(self, *commands):
        """The medians of each command. The commands run in turns; the first turn isn't counted."""
        turns = [[self.once(*words) for words in commands] for _ in range(self.runs + 1)][1:]
        return [tuple(map(statistics.median, zip(*runs))) for runs in zip(*turns)]

    def library_row(self, name):
        file = "still_%s.3DS" % name
        ((library, _),) = self.measure(("convert", file))
        os.remove(self.path("out.convert"))
        ((wall, processor),) = self.medians((file, "-o", "program.mcx", "-q"))
        self.times(name + ": program / load and script in the library", *LIBRARY_LIMITS[name],
                   processor if self.clock == 3 else wall, library, True)

    def system_calls_row(self):
        log = subprocess.run(["strace", "-f", "-c", self.program, self.path("still_many.3DS"), "-o",
                              self.path("program.mcx"), "-q"], check=True, capture_output=True, text=True).stderr
        calls = int(re.search(r"^100\.00 +\S+ +\S* +(\d+) +(?:\d+ +)?total$", log, re.M).group(1))
        self.row("many: system calls of the program", calls, 2000, 1200, "%d calls" % calls)

    def workers_rows(self):
        folder = self.path("small")
        os.mkdir(folder)
        self.scene("one", 5, 392, "--nodes")  # the average of the real scenes of an archive
        for i in range(SMALL_SCENES):
            os.link(self.path("one.3DS"), os.path.join(folder, "scene%d.3ds" % i))
        words = ("-q", "--recursive", "--output-dir", "converted", "small")
        (one, one_cpu), (two, two_cpu) = self.medians(words, words + ("-j", "2"))
        self.times("%d small scenes: -j 2 / -j 1" % SMALL_SCENES, 0.65, 0.55, two, one, True)
        self.times("the same, processor time", 1.2, 1.1, two_cpu, one_cpu, True)

    def preview_row(self):
        """Faces that each cover the picture: opaque ones from back to front, and transparent ones."""
        glass = material("GLASS", 1, [(9, 9, 9)] * 3, 99)
        near = [(2 * (i % 3) - 2.0, i / 9e4, float(i % 3 == 1)) for i in range(3000)]
        corners = [(i, i + 1, i + 2) for i in range(len(near) - 2)]
        same = chunk(0x4130, text("GLASS"), u16(8000), u16(*range(8000)))
        worst = 0.0
        for name, editor in (("opaque", self.mesh_chunk(near, corners)),
                             ("glass", glass + self.mesh_chunk(near[:3], [(0, 1, 2)] * 8000, same))):
            with open(self.path(name + ".3ds"), "wb") as file:
                file.write(scene(editor))
            ((wall, processor),) = self.medians((name + ".3ds", "-o", "out.mcx", "--preview", "out.png", "-q"))
            worst = max(worst, processor if self.clock == 3 else wall)
        self.row("preview of the worst 80 KB file, 800 x 600, in seconds", worst, 1, 0.3, "%.2f s" % worst)

    @staticmethod
    def mesh_chunk(points, corners, *groups):
        faces = chunk(0x4120, u16(len(corners)), *(u16(*face, 7) for face in corners), *groups)
        numbers = floats(*(number for point in points for number in point))
        return named_object("A", chunk(0x4100, chunk(0x4110, u16(len(points)), numbers), faces))

    def load_row(self):
        (fread, _), (load, _) = self.measure(("fread", "still_big.3DS"), ("load", "still_big.3DS"))
        self.times("big: load / plain fread", 1.5, 1.3, load, fread, True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("build", help="the folder of an optimised build", type=os.path.abspath)
    parser.add_argument("--folder", default="/dev/shm", help="where scenes and outputs go for the while")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--processor", action="store_true", help="the processor's time where one process works")
    parser.add_argument("--only", nargs="*", default=["many", "workers", "preview", "big"])
    parser.add_argument("--strict", action="store_true", help="fail when a limit isn't kept")
    options = parser.parse_args()

    folder = tempfile.mkdtemp(prefix="mc3ds-", dir=options.folder)
    try:
        program = Program(options, folder)
        if "many" in options.only:
            program.scene("many", 10000, 24, "--nodes")
            program.library_row("many")
            program.system_calls_row()
        if "workers" in options.only:
            program.workers_rows()
        if "preview" in options.only:
            program.preview_row()
        if "big" in options.only:
            program.scene("big", 100, 60000)
            program.library_row("big")
            program.load_row()
    finally:
        shutil.rmtree(folder)
    print("| Figure | Ratio | Limit | | Medians |\n| --- | --- | --- | --- | --- |")
    print("\n".join(program.rows))
    return 1 if options.strict and program.short else 0


if __name__ == "__main__":
    sys.exit(main())
