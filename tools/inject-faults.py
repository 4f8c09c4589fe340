#!/usr/bin/env python3
"""Makes each read, write, open and rename of a conversion fail in turn, and looks at what is left:

    tools/inject-faults.py PROGRAM [SCENE.3DS...] [--most N]

A run has to end with status 0 and every file whole, or with status 1, a line that names a file, and every file
as it was before. Only files that were in place when a later rename or the summary failed may be new. SCENE is the bundled sample unless given; a .vue file beside it is used. --most is how many calls
of one kind on one file are tried, spread over all of them (default: all). Needs strace.
"""
import argparse
import collections
import pathlib
import re
import subprocess
import sys
import tempfile

ERRORS = ["EIO", "ENOSPC", "ETIMEDOUT", "ESTALE", "EPERM"]
CALLS = {"read", "pread64", "write", "pwrite64", "openat", "rename", "renameat2", "link", "linkat"}
RENAMES = {"rename", "renameat2", "link", "linkat"}
TIMEOUT = 60  # seconds of a run


def arguments(scene):
    return [scene, "-o", "m.mcx", "--header=m.h", "--animation=m.anm", "--preview", "m.png", "--summary", "m.json"]


OUTPUTS = ["m.mcx", "m.h", "m.anm", "m.png"]


def prepare(folder, scene):
    """A folder with the scene and an old file at each place that the conversion writes to."""
    (folder / "scene.3ds").write_bytes(scene.read_bytes())
    vue = scene.with_suffix(".vue")
    if vue.exists():
        (folder / "scene.vue").write_bytes(vue.read_bytes())
    for name in OUTPUTS + ["m.json"]:
        (folder / name).write_text("old " + name)


def files(folder):
    return {path.name: path.read_bytes() for path in folder.iterdir()}


def trace(program, folder, *options):
    log = folder.with_suffix(".log")
    command = ["strace", "-f", "-y", "-o", log, *options, program, *arguments("scene.3ds")]
    done = subprocess.run(command, cwd=folder, capture_output=True, text=True, errors="replace", timeout=TIMEOUT)
    return done, log.read_text(errors="replace")


def plan(log, folder):
    """For each system call and each file of the run: which of these calls, counted from 1, touch the file."""
    seen = collections.Counter()
    found = collections.defaultdict(list)
    for line in log.splitlines():
        match = re.match(r"\d+ +(\w+)\((.*)", line)
        if not match:
            continue
        call, rest = match.groups()
        if call not in CALLS:
            continue
        seen[call] += 1
        if str(folder) in rest and "ENOENT" not in rest:
            name = next((n for n in ["scene.3ds", "scene.vue", "m.json", *OUTPUTS] if n in rest), None)
            if name:
                found[call, name].append(seen[call])
    return found


def judge(done, late, before, after, whole):
    """What is wrong with the end of a run; empty if nothing is. late: the fault comes when files are in place."""
    strangers = set(after) - set(before)
    if strangers:
        return f"left {sorted(strangers)} behind"
    if done.returncode == 0:
        damaged = [name for name in OUTPUTS if after[name] != whole[name]]
        return f"status 0, but {damaged} not whole" if damaged else ""
    if done.returncode != 1:
        return f"status {done.returncode}"
    changed = [name for name in OUTPUTS if after[name] != before[name] and not (late and after[name] == whole[name])]
    if changed:
        return f"status 1, but {changed} changed"
    named = re.search(r"scene\.(3ds|vue)|m\.(mcx|h|anm|png|json)", done.stderr)
    return "" if named else f"no line names a file: {done.stderr!r}"


def spread(indices, most):
    if not most or len(indices) <= most:
        return indices
    return sorted({indices[i * (len(indices) - 1) // max(most - 1, 1)] for i in range(most)})


def inject(program, scene, most):
    runs = failures = 0
    with tempfile.TemporaryDirectory() as top:
        def fresh(name):
            folder = pathlib.Path(top, name)
            folder.mkdir()
            prepare(folder, scene)
            return folder
        folder = fresh("whole")
        done, log = trace(program, folder)
        if done.returncode != 0:
            sys.exit(f"{scene}: fails without a fault:\n{done.stderr}")
        whole = files(folder)
        for (call, name), indices in sorted(plan(log, folder).items()):
            for index in spread(indices, most):
                for error in ERRORS:
                    folder = fresh(f"run{runs}")
                    before = files(folder)
                    runs += 1
                    try:
                        done, _ = trace(program, folder, "-e", f"inject={call}:error={error}:when={index}")
                        late = call in RENAMES or name == "m.json"
                        wrong = judge(done, late, before, files(folder), whole)
                    except subprocess.TimeoutExpired:
                        wrong = "doesn't end"
                    if wrong:
                        failures += 1
                        print(f"{scene.name}: {error} in {call} {index}, of {name}: {wrong}")
    return runs, failures


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("scenes", nargs="*", type=pathlib.Path)
    parser.add_argument("--most", type=int, default=0)
    asked = parser.parse_args()
    sample = pathlib.Path(__file__).parent.parent / "samples" / "orrery.3DS"
    runs = failures = 0
    for scene in asked.scenes or [sample]:
        more, failed = inject(asked.program.resolve(), scene.resolve(), asked.most)
        runs += more
        failures += failed
    print(f"{runs} faults, {failures} of them with a wrong end")
    return 1 if failures or not runs else 0


if __name__ == "__main__":
    sys.exit(main())
