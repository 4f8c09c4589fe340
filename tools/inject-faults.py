#!/usr/bin/env python3
"""Makes the system calls of a conversion fail in turn, and looks at what is left:

    tools/inject-faults.py PROGRAM [SCENE.3DS...] [--most N] [--calls CALL,...] [--jobs N]

A run has to end with status 0 and every file whole, or with status 1, a line that says what failed, and all files of
a scene as they were before. The report page and the summary come last, so the files of a scene may be new when one
of these two failed. Each scene is converted alone with every kind of output, and twice in one run with two workers.
SCENE is the bundled sample unless given; a .vue file beside it is used. --most is how many calls of one kind on one
file are tried, spread over all of them (default: all). --jobs is how many runs go on at a time. Needs strace.
"""
import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

TIMEOUT = 60  # seconds of a run
DISK = ["EIO", "ENOSPC", "EPERM"]
# Calls on a file of the run, and what they fail with.
ON_FILES = {call: DISK for call in
            "read pread64 write pwrite64 openat lseek close fsync rename renameat2 link linkat unlink unlinkat rmdir "
            "mkdir mkdirat getdents64".split()}
# Calls of the process, counted from the first call that touches a file of the run.
ON_PROCESS = {"chdir": ["EACCES"], "getcwd": ["ENOENT"], "clone": ["EAGAIN"], "clone3": ["EAGAIN"],
              "vfork": ["EAGAIN"], "fork": ["EAGAIN"], "pipe": ["EMFILE"], "pipe2": ["EMFILE"], "poll": ["ENOMEM"],
              "ppoll": ["ENOMEM"], "mmap": ["ENOMEM"]}
CLEANING = {"unlink", "unlinkat", "rmdir", "getdents64"}  # nothing can be removed when these fail
INPUTS = ["a.3ds", "a.vue", "b.3ds", "b.vue"]
RUN_FILES = ["r.html", "s.json"]

ALONE = ["a.3ds", "-o", "a.mcx", "--header=a.h", "--animation=a.anm", "--preview", "a.png", "--glb", "a.glb"]
BOTH = ["a.3ds", "b.3ds", "-j", "2", "--header", "--animation", "--preview", "m.png", "--glb", "m.glb"]
OF_RUN = ["--report", "r.html", "--summary", "s.json"]
COMMANDS = [ALONE + OF_RUN, BOTH + OF_RUN]


def prepare(folder, scene, outputs):
    """A folder with the scenes and an old file at each place that the conversion writes to."""
    folder.mkdir()
    vue = scene.with_suffix(".vue")
    for name in "ab":
        shutil.copyfile(scene, folder / (name + ".3ds"))
        if vue.exists():
            shutil.copyfile(vue, folder / (name + ".vue"))
    for name in outputs:
        (folder / name).write_text("old " + name)


def files(folder):
    return {str(path.relative_to(folder)): path.read_bytes() if path.is_file() else b"" for path in folder.rglob("*")}


def trace(program, folder, command, *options):
    log = folder.with_suffix(".log")
    whole = ["strace", "-f", "-y", "-o", log, *options, program, *command]
    done = subprocess.run(whole, cwd=folder, capture_output=True, text=True, errors="replace", timeout=TIMEOUT)
    text = log.read_text(errors="replace")
    log.unlink()
    return done, text


def plan(log, folder, names):
    """For each call and each file of the run: which of these calls, counted from 1 in each process, touch the file."""
    seen = collections.Counter()
    found = collections.defaultdict(set)
    first = None
    loaders = None  # how many calls of each kind the loader of the program made
    for line in log.splitlines():
        match = re.match(r"(\d+) +(\w+)\((.*)", line)
        if not match or (match[2] not in ON_FILES and match[2] not in ON_PROCESS):
            continue
        process, call, rest = match.groups()
        rest = re.sub("AT_FDCWD<[^>]*>", "", rest)
        seen[process, call] += 1
        read = next((name for name in INPUTS if "/" + name in rest or '"' + name + '"' in rest), None)
        if read and call in ON_FILES:  # strace counts the calls on a path of their own
            seen[process, call, read] += 1
            found[call, read].add(seen[process, call, read])
            loaders = loaders or dict(seen)
            first = first or process
            continue
        name = next((name for name in names if "/" + name in rest or '"' + name + '"' in rest), None)
        if name is None and str(folder) in rest:
            name = "folders"
        if name:
            loaders = loaders or dict(seen)
            first = first or process
        if call in ON_PROCESS and loaders and seen[process, call] > loaders.get((first, call), 0):
            found[call, "process"].add(seen[process, call])
        elif call in ON_FILES and name and "ENOENT" not in rest:
            found[call, name].add(seen[process, call])
    return {key: sorted(indices) for key, indices in found.items()}


def is_whole(name, text):
    if name == "s.json":
        try:
            return "scenes" in json.loads(text)
        except ValueError:
            return False
    return text.rstrip().endswith(b"</html>")


def judge(call, name, done, before, after, whole):
    """What is wrong with the end of a run; empty if nothing is."""
    strangers = set(after) - set(before)
    if strangers and call not in CLEANING:
        return f"left {sorted(strangers)} behind"
    if done.returncode not in (0, 1):
        return f"status {done.returncode}: {done.stderr[-200:]!r}"
    kept = {}
    for scene in "ab":
        own = [file for file in whole if file.startswith(scene) and whole[file] != before[file]]
        new = {after.get(file) == whole[file] for file in own}
        if len(new) > 1 or any(after.get(file) not in (whole[file], before[file]) for file in own):
            return f"files of {scene} are mixed or damaged: " + str({file: after.get(file) == whole[file] for file in own})
        kept[scene] = False in new
    damaged = [file for file in RUN_FILES if after.get(file) != before[file] and not is_whole(file, after.get(file, b""))]
    if damaged:
        return f"{damaged} damaged"
    old = [file for file in RUN_FILES if after.get(file) == before[file]]
    if done.returncode == 0:
        return f"status 0, but old: {kept} {old}" if old or any(kept.values()) else ""
    # A file that was delivered, and nothing to say why the status is 1.
    if not re.search(r"^3ds2mcx: ", done.stderr, re.M):
        return f"status 1, and no line says why: {done.stderr!r}"
    return "" if call in ON_PROCESS or re.search(r"[abmrs]\.(3ds|vue|mcx|h|anm|png|glb|html|json)|folder", done.stderr) else \
        f"no line names a file: {done.stderr!r}"


def spread(indices, most):
    if not most or len(indices) <= most:
        return indices
    return sorted({indices[i * (len(indices) - 1) // max(most - 1, 1)] for i in range(most)})


def inject(program, scene, command, asked, table):
    with tempfile.TemporaryDirectory() as top:
        first = pathlib.Path(top, "first")
        prepare(first, scene, RUN_FILES)
        inputs = set(files(first))
        done, _ = trace(program, first, command)
        if done.returncode != 0:
            sys.exit(f"{scene}: fails without a fault:\n{done.stderr}")
        outputs = sorted(set(files(first)) - inputs) + RUN_FILES
        folder = pathlib.Path(top, "whole")
        prepare(folder, scene, outputs)
        done, log = trace(program, folder, command)
        whole = files(folder)

        def run(job):
            number, call, name, index, error = job
            own = pathlib.Path(top, f"run{number}")
            prepare(own, scene, outputs)
            before = files(own)
            try:
                paths = [text for path in (name, own / name) for text in ("-P", path)] if name in INPUTS else []
                done, _ = trace(program, own, command, *paths, "-e", f"inject={call}:error={error}:when={index}")
                if done.returncode == 127:  # the loader of the program ran into the fault
                    shutil.rmtree(own)
                    return call, None, ""
                wrong = judge(call, name, done, before, files(own), whole)
            except subprocess.TimeoutExpired:
                wrong = "doesn't end"
            shutil.rmtree(own)
            return call, wrong, f"{scene.name} {command[:2]}: {error} in {call} {index}, of {name}: {wrong}"

        jobs = []
        for (call, name), indices in sorted(plan(log, folder, list(whole)).items()):
            # A close that strace lets fail leaves the file open, and the end of a worker is seen by a closed pipe.
            if call == "close" and command is COMMANDS[1] and name not in INPUTS:
                continue
            if not asked.calls or call in asked.calls.split(","):
                for index in spread(indices, asked.most):
                    jobs += [(len(jobs) + i, call, name, index, error)
                             for i, error in enumerate(ON_FILES.get(call) or ON_PROCESS[call])]
        with concurrent.futures.ThreadPoolExecutor(asked.jobs) as pool:
            for call, wrong, line in pool.map(run, jobs):
                if wrong is not None:
                    table[call][bool(wrong)] += 1
                if wrong:
                    print(line, flush=True)


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("program", type=pathlib.Path)
    parser.add_argument("scenes", nargs="*", type=pathlib.Path)
    parser.add_argument("--most", type=int, default=0)
    parser.add_argument("--calls", default="")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    asked = parser.parse_args()
    sample = pathlib.Path(__file__).parent.parent / "samples" / "orrery.3DS"
    table = collections.defaultdict(collections.Counter)
    for scene in asked.scenes or [sample]:
        for command in COMMANDS:
            inject(asked.program.resolve(), scene.resolve(), command, asked, table)
    print("\n| Call | Faults | Wrong ends |\n| --- | --- | --- |")
    for call in sorted(table):
        print(f"| {call} | {sum(table[call].values())} | {table[call][True]} |")
    runs = sum(sum(row.values()) for row in table.values())
    failures = sum(row[True] for row in table.values())
    print(f"\n{runs} faults, {failures} of them with a wrong end")
    return 1 if failures or not runs else 0


if __name__ == "__main__":
    sys.exit(main())
