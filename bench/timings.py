#!/usr/bin/env -S python3 -B
"""Times the library on large scenes, side by side with the plain way, and prints a table of ratios.

Needs about 3 GB in FOLDER, which should be in memory. A ratio compares the medians of runs that take turns in
one process. Exits with 1 if the library's files differ from those of the plain writer, and with --strict also
if a limit is exceeded.
"""
import argparse
import filecmp
import os
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))


class Timings:
    def __init__(self, options, folder):
        self.measure_program = os.path.join(options.build, "bench", "mc3ds_measure")
        self.runs, self.folder, self.clock = options.runs, folder, 3 if options.processor else 2
        self.rows, self.short, self.unequal = [], False, []

    def path(self, name):
        return os.path.join(self.folder, name)

    def scene(self, name, meshes, vertices, *more):
        """Makes NAME.3DS, with frames also NAME.vue, and still_NAME.3DS: the same without .vue file."""
        subprocess.run([sys.executable, "-B", os.path.join(HERE, "make_scene.py"), self.path(name + ".3DS"),
                        str(meshes), str(vertices), str(vertices // 2 if vertices < 100 else vertices),
                        *more], check=True)
        os.link(self.path(name + ".3DS"), self.path("still_" + name + ".3DS"))

    def measure(self, *jobs, runs=None):
        """Seconds and growth of peak memory in KiB for each job (action, file). The jobs run in turns."""
        words = [word for action, file in jobs for word in (action, self.path(file))]
        lines = subprocess.run([self.measure_program, str(runs or self.runs), self.path("out"), *words],
                               check=True, capture_output=True, text=True).stdout.splitlines()
        return [(float(line.split()[self.clock]), int(line.split()[4])) for line in lines]

    def row(self, figure, ratio, limit, aim, detail, at_most=True):
        kept = ratio <= limit if at_most else ratio >= limit
        reached = ratio <= aim if at_most else ratio >= aim
        self.short |= not kept
        word = "at most" if at_most else "at least"
        self.rows.append("| %s | %.2f | %s %g, aim %g | %s | %s |" % (
            figure, ratio, word, limit, aim, "aim met" if reached else "met" if kept else "SHORT", detail))
        print(self.rows[-1], file=sys.stderr, flush=True)

    def times(self, figure, limit, aim, ours, other, at_most):
        ratio = ours / other if at_most else other / ours
        self.row(figure, ratio, limit, aim, "%.1f ms against %.1f ms" % (ours * 1e3, other * 1e3), at_most)

    def compare(self, action, *kinds):
        for kind in kinds:
            ours, other = self.path("out.%s%s" % (action, kind)), self.path("out.base-%s%s" % (action, kind))
            if not filecmp.cmp(ours, other, shallow=False):
                self.unequal.append(action + kind)
            os.remove(ours)
            os.remove(other)

    def scene_rows(self, name, limits):
        still, anim = "still_%s.3DS" % name, "%s.3DS" % name
        (fread, _), (load, _), (base, _) = self.measure(
            ("fread", still), ("load", still), ("base-load", still))
        self.times(name + ": load / plain fread", *limits["load"], load, fread, True)
        self.times(name + ": field-by-field load / load", *limits["base-load"], load, base, False)

        self.measure(("script", still), runs=1)
        os.rename(self.path("out.script"), self.path("script"))
        (script, _), (fwrite, _) = self.measure(("script", still), ("fwrite", "script"))
        self.times(name + ": script / plain fwrite", *limits["script"], script, fwrite, True)
        os.remove(self.path("script"))
        os.remove(self.path("out.script"))
        os.remove(self.path("out.fwrite"))

        (ours, _), (base, _) = self.measure(("convert", still), ("base-convert", still))
        self.times(name + ": plain conversion / conversion", *limits["convert"], ours, base, False)
        self.compare("convert", "")
        (ours, _), (base, _) = self.measure(("source", anim), ("base-source", anim))
        self.times(name + ": fprintf / C source, header, animation", *limits["source"], ours, base, False)
        self.compare("source", "", ".h", ".anim")
        (direct, _), (bare, _) = self.measure(("direct", still), ("bare", still))
        self.times(name + ": direct / bare calls", *limits["direct"], direct, bare, True)

        (restore, _), (load, _) = self.measure(("restore", still), ("load", still))
        self.times(name + ": restore and load / load", *limits["restore"], restore, load, True)
        ((_, peak),) = self.measure(("restore", still), runs=1)
        size = os.path.getsize(self.path(still)) / 1024
        self.row(name + ": (peak of restoring - 4 MiB) / file", (peak - 4096) / size, 3, 2.5,
                 "%.1f MiB for %.1f MiB" % (peak / 1024, size / 1024))
        if os.path.exists(self.path("out.restore")):
            os.remove(self.path("out.restore"))

        ((_, peak),) = self.measure(("load", still), runs=1)
        size = os.path.getsize(self.path(still)) / 1024
        self.row(name + ": (peak of load - 4 MiB) / file", (peak - 4096) / size, *limits["peak"],
                 "%.1f MiB for %.1f MiB" % (peak / 1024, size / 1024))

    def growth_rows(self):
        counts = (10000, 20000, 32000)
        for count in counts[1:]:
            self.scene("many%d" % count, count, 24, "--nodes")
        os.link(self.path("still_many.3DS"), self.path("still_many10000.3DS"))
        times = self.measure(*(("convert", "still_many%d.3DS" % count) for count in counts))
        each = [time / count for (time, _), count in zip(times, counts)]
        for i in (1, 2):
            self.row("time of an object, %d / %d objects" % (counts[i], counts[0]), each[i] / each[0], 2, 1.3,
                     "%.2f us against %.2f us" % (each[i] * 1e6, each[0] * 1e6))

    def vue_rows(self):
        each, shapes = [], ((200, 500), (1000, 100), (5000, 20))
        for objects, frames in shapes:
            name = "vue%d" % objects
            self.scene(name, objects, 24, "--frames", str(frames))
            (load, _), (still, _), (base, _) = self.measure(
                ("load", name + ".3DS"), ("load", "still_%s.3DS" % name), ("base-load", name + ".3DS"))
            each.append((load - still) / (objects * (frames + 1)))
            if objects == 200:
                self.times(".vue of 500 frames x 200 objects: fscanf / load", 4, 4, load, base, False)
        for i in (1, 2):
            self.row("time of a .vue record, %d / 200 objects" % shapes[i][0], each[i] / each[0], 1.3, 1.1,
                     "%.3f us against %.3f us" % (each[i] * 1e6, each[0] * 1e6))


LIMITS = {
    "big": {"load": (2.5, 1.5), "base-load": (5, 8), "script": (2.2, 1.7), "convert": (10, 14),
            "source": (8, 8), "direct": (1.5, 1.5), "peak": (1.5, 1.5), "restore": (2.5, 2)},
    "many": {"load": (4, 2), "base-load": (4, 8), "script": (3, 1.7), "convert": (7, 12),
             "source": (6, 6), "direct": (2, 2), "peak": (2, 2), "restore": (3, 2.5)},
}


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("build", help="the folder of an optimised build")
    parser.add_argument("--folder", default="/dev/shm", help="where scenes and outputs go for the while")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--processor", action="store_true",
                        help="the processor's time, which other work on the machine hardly lengthens")
    parser.add_argument("--only", nargs="*", default=["big", "many", "growth", "vue"])
    parser.add_argument("--strict", action="store_true", help="fail when a limit isn't kept")
    options = parser.parse_args()

    folder = tempfile.mkdtemp(prefix="mc3ds-", dir=options.folder)
    try:
        timings = Timings(options, folder)
        if "big" in options.only:
            timings.scene("big", 100, 60000, "--frames", "10")
            timings.scene_rows("big", LIMITS["big"])
        if "many" in options.only or "growth" in options.only:
            timings.scene("many", 10000, 24, "--nodes", "--frames", "10")
        if "many" in options.only:
            timings.scene_rows("many", LIMITS["many"])
        if "growth" in options.only:
            timings.growth_rows()
        if "vue" in options.only:
            timings.vue_rows()
    finally:
        shutil.rmtree(folder)
    print("| Figure | Ratio | Limit | | Medians |\n| --- | --- | --- | --- | --- |")
    print("\n".join(timings.rows))
    for name in timings.unequal:
        print("The files of %s aren't those of the plain writer" % name, file=sys.stderr)
    return 1 if timings.unequal or (options.strict and timings.short) else 0


if __name__ == "__main__":
    sys.exit(main())
