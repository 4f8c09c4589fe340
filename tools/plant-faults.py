#!/usr/bin/env python3
"""Plants faults in the sources, one at a time, and shows those that the tests let pass.

    tools/plant-faults.py [--faults N] [--seed N] [--only TEXT] [--again FILE] [--jobs N] [--plain] [--list]

All faults are compiled at once into a copy of the sources, each behind a selector that an environment variable sets:
a fault costs a run of the tests, and no build. Rules plant most of them; tools/hand-written-faults.txt has the
others. What can't be compiled is left out. tools/judged-faults.txt names survivors that change nothing that anybody
could see, with the reason; where the code says it, the line ends in the comment "unnoticed". The fast tests run first,
and a run ends at the first test that fails. The sanitizers find reads out of bounds and leaks; --plain does without.

Takes 90 minutes for 600 faults on two cores, 40 with --plain. Builds go to build/planted.
"""
import argparse
import collections
import concurrent.futures
import hashlib
import os
import pathlib
import re
import resource
import shutil
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent
FOLDERS = ["src", "platform", "host", "restore"]
FILE_LIMIT = 2 << 30  # bytes that a test may write into one file
SELECTOR = "MC3DS_FAULT"
UNNOTICED = "// unnoticed"  # ends a line of code whose faults nobody can notice
HARMLESS = re.compile(r"\.reserve\(|\bva_end\(|\bassert\(")  # room ahead of need, and checks of callers
NOBODY = 65534  # the user without rights
# StrictMcl compiles the sources itself, without the header that the faults need.
SLOW = "Scenes/*:*Memory*:FileFailure*:Deep*:*EndsEarly*:DirectTargets*:*Browser*:*Interrupt*:Glb*"

HEADER = r"""
#ifndef MC3DS_PLANTED
#define MC3DS_PLANTED
#if defined(__cplusplus)
#include <cstdlib>
// Operators are faulty where this tells; a tag between two of them holds the left operand.
namespace planted {
inline const int selected = std::getenv("MC3DS_FAULT") ? std::atoi(std::getenv("MC3DS_FAULT")) : 0;
inline bool Is(int n) { return selected == n; }
template <int n, int kind> struct Tag {};
template <class A, int n, int kind> struct Held { const A &a; };
#define MC3DS_HOLD(op) \
    template <class A, int n, int kind> Held<A, n, kind> operator op(const A &a, Tag<n, kind>) { return {a}; }
MC3DS_HOLD(<) MC3DS_HOLD(==) MC3DS_HOLD(+) MC3DS_HOLD(*)
template <class A, int n, int kind, class B> bool operator>(Held<A, n, kind> h, const B &b)
{
    if constexpr (kind == 0) return Is(n) ? h.a <= b : h.a < b;
    else if constexpr (kind == 1) return Is(n) ? h.a < b : h.a <= b;
    else if constexpr (kind == 2) return Is(n) ? h.a >= b : h.a > b;
    else if constexpr (kind == 3) return Is(n) ? h.a > b : h.a >= b;
    else if constexpr (kind == 4) return Is(n) ? h.a >= b : h.a < b;
    else if constexpr (kind == 5) return Is(n) ? h.a > b : h.a <= b;
    else if constexpr (kind == 6) return Is(n) ? h.a <= b : h.a > b;
    else return Is(n) ? h.a < b : h.a >= b;
}
template <class A, int n, int kind, class B> bool operator==(Held<A, n, kind> h, const B &b)
{
    if constexpr (kind == 0) return Is(n) ? !(h.a == b) : h.a == b;
    else return Is(n) ? !(h.a != b) : h.a != b;
}
template <class A, int n, int kind, class B> auto operator+(Held<A, n, kind> h, const B &b) -> decltype(h.a - b)
{
    if constexpr (kind == 0) return Is(n) ? h.a - b : h.a + b;
    else if constexpr (kind == 1) return Is(n) ? h.a + b : h.a - b;
    else return Is(n) ? b - h.a : h.a - b;
}
template <class A, int n, int kind, class B> auto operator*(Held<A, n, kind> h, const B &b) -> decltype(h.a / b)
{
    if constexpr (kind == 0) return Is(n) ? h.a + b : h.a * b;
    else return Is(n) ? h.a * b : h.a / b;
}
} // namespace planted
#endif
#endif
"""

RELATIONS = {"<": [0, 4], "<=": [1, 5], ">": [2, 6], ">=": [3, 7]}
Fault = collections.namedtuple("Fault", "file line start end rule shown new")  # new: with %d for the number


def mask(line):
    """The line with texts and comments blotted out, so that only code is found in it."""
    line = re.sub(r'"(\\.|[^"\\])*"|\'(\\.|[^\'\\])+\'', lambda match: '"' + "_" * (len(match[0]) - 2) + '"', line)
    return re.sub(r"//.*", lambda match: " " * len(match[0]), line)


def closing(text, at):
    """Where the bracket that opens at a place is closed; -1 when not in this text."""
    depth = 0
    for index in range(at, len(text)):
        depth += (text[index] == "(") - (text[index] == ")")
        if depth == 0:
            return index
    return -1


def faults_of_line(file, number, line):
    code = mask(line)
    if HARMLESS.search(code):
        return
    if re.search(r"constexpr|static_assert|^\s*(case|#|static const|using|template)\b|operator|\bfor \(const auto", code):
        return

    def fault(start, end, rule, new):
        return Fault(file, number, start, end, rule, line.strip(), new)

    for match in re.finditer(r" (<=?|>=?) ", code):
        for kind in RELATIONS[match[1]]:
            yield fault(match.start(1), match.end(1), "comparison", "< planted::Tag<%%d, %d>{} >" % kind)
    for match in re.finditer(r" ([!=]=) ", code):
        yield fault(match.start(1), match.end(1), "equality", "== planted::Tag<%%d, %d>{} ==" % (match[1] == "!="))
    for match in re.finditer(r"[\w)\]] ([-+]) (?=[\w(])", code):
        for kind in [0] if match[1] == "+" else [1, 2]:
            yield fault(match.start(1), match.end(1), "sum" if kind < 2 else "swapped operands",
                        "+ planted::Tag<%%d, %d>{} +" % kind)
    for match in re.finditer(r"[\w)\]] ([*/]) (?=[\w(])", code):
        yield fault(match.start(1), match.end(1), "product", "* planted::Tag<%%d, %d>{} *" % (match[1] == "/"))
    for match in re.finditer(r"(?<![\w.'#])(\d+(?:\.\d+)?f?|0x[0-9A-Fa-f]+)u?(?![\w.'])", code):
        for change in ("+", "-"):
            text = "(planted::Is(%%d) ? %s %s 1 : %s)" % (match[0], change, match[0])
            yield fault(match.start(), match.end(), "constant", text)
    for match in re.finditer(r"\b(if|while) \(", code):
        end = closing(code, match.end() - 1)
        if end > 0 and ";" not in code[match.end():end] and "const " not in code[match.end():end]:
            condition = line[match.end():end].replace("%", "%%")
            for value in ("false", "true") if match[1] == "if" else ("false",):
                yield fault(match.end(), end, "condition", "planted::Is(%%d) ? %s : static_cast<bool>(%s)" % (value, condition))
    for match in re.finditer(r"static_cast<double>\(", code):
        end = closing(code, match.end() - 1)
        if end > 0:
            inner = line[match.end():end].replace("%", "%%")
            text = "(planted::Is(%%d) ? static_cast<double>(static_cast<float>(%s)) : static_cast<double>(%s))"
            yield fault(match.start(), end + 1, "float for double", text % (inner, inner))
    for match in re.finditer(r"\breturn (true|false);", code):
        yield fault(match.start(1), match.end(1), "result",
                    "planted::Is(%%d) ? %s : %s" % ("false" if match[1] == "true" else "true", match[1]))
    for match in re.finditer(r'(?<=[(+,] )"(\\.|[^"\\%])+"(?= ?[+,)])|(?<=\()"(\\.|[^"\\%])+"(?= \+|\))', line):
        yield fault(match.start(), match.end(), "words", '(planted::Is(%%d) ? "" : %s)' % match[0])


STATEMENT = re.compile(r"^(\s+)(?!return|break|continue|else|if|for|while|do|switch|case|default|goto|using|static|const|"
                       r"auto|delete|throw|[\w:<>, *&]+ [*&]?\w+(?: =|;|\[|\{|\())([\w*+\-(:>.\[\]]+.*;)$")


def faults_of_file(file):
    lines = (ROOT / file).read_text().splitlines()
    inside = False
    for number, line in enumerate(lines):
        if line == "{":
            inside = True
        elif line == "}":
            inside = False
        elif inside:
            yield from faults_of_line(file, number, line)
            match = None if HARMLESS.search(line) else STATEMENT.match(line)
            ends = number == 0 or mask(lines[number - 1]).rstrip()[-1:] in (";", "{", "}", ")", ":", "", "e")
            if match and ends and mask(line).count("(") == mask(line).count(")"):
                text = "{ if (!planted::Is(%%d)) %s }" % match[2].replace("%", "%%")
                rule = "lost free" if "free(" in line.lower() else "lost report" if "Error(" in line else "statement"
                yield Fault(file, number, len(match[1]), len(line), rule, line.strip(), text)
            elif re.match(r"\s+continue;$", line):
                yield Fault(file, number, 0, len(line), "statement", "continue;", "{ if (!planted::Is(%d)) continue; }")


def hand_written():
    """Lines of FILE | TEXT | OTHER TEXT: an expression of the file and what stands for it."""
    path = HERE / "hand-written-faults.txt"
    for entry in path.read_text().splitlines() if path.exists() else []:
        if not entry.strip() or entry.startswith("#"):
            continue
        file, old, new = (part.strip() for part in entry.split(" | "))
        for number, line in enumerate((ROOT / file).read_text().splitlines()):
            if old in line:
                at = line.index(old)
                text = "(planted::Is(%%d) ? (%s) : (%s))" % (new.replace("%", "%%"), old.replace("%", "%%"))
                yield Fault(file, number, at, at + len(old), "by hand", "%s -> %s" % (old, new), text)
                break
        else:
            sys.exit("plant-faults.py: %s has no line with %s" % (file, old))


def judged():
    """Lines of FILE | RULE | LINE OF CODE | CHANGE | REASON, the first four as survivors are printed."""
    lines = (HERE / "judged-faults.txt").read_text().splitlines()
    return {" | ".join(line.split(" | ")[:-1]) for line in lines if line.strip() and not line.startswith("#")}


def words_of(fault):
    """What a survivor is printed as."""
    return " | ".join([fault.file, fault.rule, fault.shown, fault.new % 0])


def plant(faults, copy):
    """Writes the sources with those faults, by their numbers from 1; of two that overlap the first is planted."""
    by_file = collections.defaultdict(list)
    for number, fault in faults.items():
        by_file[fault.file].append((number, fault))
    for file, entries in by_file.items():
        lines = (ROOT / file).read_text().splitlines()
        for number, fault in sorted(entries, key=lambda entry: (entry[1].line, -entry[1].start)):
            line = lines[fault.line]
            lines[fault.line] = line[:fault.start] + fault.new % number + line[fault.end:]
        text = "\n".join(lines) + "\n"
        target = copy / file
        if not target.exists() or target.read_text() != text:
            target.write_text(text)


def choose(faults, count, seed):
    """As many from each file as its share, one at each place. A change of the sources leaves most of the choice."""
    def order(fault):
        words = "%d %s %d" % (seed, words_of(fault), fault.start)
        return fault.rule != "by hand", hashlib.sha256(words.encode()).digest()
    taken, chosen = collections.defaultdict(list), []
    for fault in sorted(faults, key=order):
        spans = taken[(fault.file, fault.line)]
        if all(fault.end <= start or end <= fault.start for start, end in spans):
            spans.append((fault.start, fault.end))
            chosen.append(fault)
    files = collections.Counter(fault.file for fault in chosen)
    quota = {file: max(4, round(number * count / len(chosen))) for file, number in files.items()}
    result, used = [], collections.Counter()
    for fault in chosen:
        if fault.rule == "by hand" or used[fault.file] < quota[fault.file]:
            used[fault.file] += fault.rule != "by hand"
            result.append(fault)
    return result


def build(faults, copy, sanitize):
    """Leaves out what can't be compiled, until the rest can."""
    flags = "-O1 -include %s -Wno-all" % (copy / "planted.h")
    if sanitize:
        # gcc takes the reference of a forced unwind for one to null; other null pointers crash anyway.
        flags += " -fsanitize=address,undefined -fno-sanitize=vptr,null -fno-sanitize-recover=all"
    (copy / "planted.h").write_text(HEADER)
    configure = ["cmake", "-S", str(copy), "-B", str(copy / "build"), "-G", "Ninja", "-DCMAKE_BUILD_TYPE=None",
                 "-DCMAKE_CXX_FLAGS=" + flags, "-DCMAKE_C_FLAGS=" + ("-fsanitize=address,undefined" if sanitize else "")]
    for _ in range(12):
        plant(faults, copy)
        subprocess.run(configure, check=True, stdout=subprocess.DEVNULL)
        done = subprocess.run(["cmake", "--build", str(copy / "build"), "--", "-k", "0"], capture_output=True, text=True)
        if done.returncode == 0:
            return faults
        places = re.findall(r"(?m)^\S*?\b((?:src|platform|host|restore)/[\w/.]+):(\d+):\d+: (?:error|  required)", done.stdout)
        # The second try is for errors that are reported at the end of the line before, and for declarations that a
        # fault has spoilt, and that the errors come after.
        for least, most in ((0, 0), (-1, 40)):
            bad = {number for number, fault in faults.items() for file, line in places
                   if fault.file == file and least <= int(line) - 1 - fault.line <= most}
            if bad:
                break
        if not bad:
            sys.exit("\n".join(re.findall(r".*(?:error|undefined).*", done.stdout)) or done.stdout[-3000:])
        for number in bad:
            fault = faults.pop(number)
            lines = (ROOT / fault.file).read_text()
            (copy / fault.file).write_text(lines)
    sys.exit("plant-faults.py: no end of what can't be compiled")


def limit():
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
    os.setsid()
    if os.geteuid() == 0:  # a faulty program may replace a device
        os.setgroups([])
        os.setgid(NOBODY)
        os.setuid(NOBODY)


def run(copy, number, arguments, timeout):
    """True when the tests pass."""
    environment = dict(os.environ, **{SELECTOR: str(number), "ASAN_OPTIONS": "use_sigaltstack=0"})
    child = subprocess.Popen([str(copy / "build/tests/mcl3ds20_tests"), "--gtest_brief=1", "--gtest_fail_fast", *arguments],
                             env=environment, cwd=copy / "build", preexec_fn=limit,
                             stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        return child.wait(timeout) == 0
    except subprocess.TimeoutExpired:
        return False
    finally:
        try:
            os.killpg(child.pid, 9)
        except ProcessLookupError:
            pass


def survives(copy, number, timeout):
    return (run(copy, number, ["--gtest_filter=-StrictMcl*:" + SLOW], timeout) and
            run(copy, number, ["--gtest_filter=" + SLOW], timeout))


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n")[0])
    parser.add_argument("--faults", type=int, default=600, help="about how many (default: 600)")
    parser.add_argument("--seed", type=int, default=1, help="picks others (default: 1)")
    parser.add_argument("--only", default="", help="files whose path has this text")
    parser.add_argument("--again", metavar="FILE", help="only those that FILE has, as printed or as judged")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="faults at a time (default: as many as cores)")
    parser.add_argument("--plain", action="store_true", help="without address and undefined behaviour checks")
    parser.add_argument("--list", action="store_true", help="show the faults and plant none")
    options = parser.parse_args()

    files = [str(path.relative_to(ROOT)) for folder in FOLDERS for path in sorted((ROOT / folder).rglob("*.cpp"))]
    everything = [fault for file in files if options.only in file for fault in faults_of_file(file)]
    everything += [fault for fault in hand_written() if options.only in fault.file]
    if options.again:
        lines = pathlib.Path(options.again).read_text().splitlines()
        wanted = {re.sub(r" \(line \d+.*\)$", "", line) for line in lines} | {line.rpartition(" | ")[0] for line in lines}
        everything = [fault for fault in everything if words_of(fault) in wanted]
    chosen = choose(everything, len(everything) if options.again else options.faults, options.seed)
    faults = dict(enumerate(chosen, 1))
    if options.list:
        for number, fault in faults.items():
            print(number, "%s:%d" % (fault.file, fault.line + 1), fault.rule, fault.shown)
        return 0
    copy = ROOT / "build" / "planted"
    copy.mkdir(parents=True, exist_ok=True)
    tracked = subprocess.run(["git", "-C", str(ROOT), "ls-files"], check=True, capture_output=True, text=True).stdout
    for name in tracked.split():
        target = copy / name
        target.parent.mkdir(parents=True, exist_ok=True)
        text = (ROOT / name).read_bytes()
        if not target.exists() or target.read_bytes() != text:
            shutil.copy(ROOT / name, target)
    faults = build(faults, copy, not options.plain)
    timeout = 240 if options.plain else 900
    if not survives(copy, 0, timeout):
        sys.exit("plant-faults.py: the tests fail without a fault")
    known = judged()
    table = collections.defaultdict(collections.Counter)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        results = pool.map(lambda number: (number, survives(copy, number, timeout)), faults)
        for number, lives in results:
            fault = faults[number]
            equivalent = words_of(fault) in known or fault.shown.endswith(UNNOTICED)
            table[fault.file.split("/")[0]]["faults"] += 1
            table[fault.file.split("/")[0]]["equivalent" if lives and equivalent else "survived" if lives else "found"] += 1
            if lives and not equivalent:
                print("%s (line %d, column %d)" % (words_of(fault), fault.line + 1, fault.start + 1), flush=True)
    if not survives(copy, 0, timeout):
        sys.exit("plant-faults.py: the tests fail without a fault after all of these, so the results are worth nothing")
    print("\n| Folder | Faults | Found | Equivalent | Survived |\n| --- | --- | --- | --- | --- |")
    for folder in sorted(table):
        row = table[folder]
        print("| %s | %d | %d | %d | %d |" % (folder, row["faults"], row["found"], row["equivalent"], row["survived"]))
    return 0


if __name__ == "__main__":
    sys.exit(main())
