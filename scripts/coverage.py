#!/usr/bin/env python3
"""Sums up what the tests have run, a folder a line, and judges it: in the core every branch is taken, but those that the list
names; elsewhere at least 95 of 100 lines and branches are.

    scripts/coverage.py BUILD UNCOVERED.TXT [FOLDER...]

A line of the list is FILE, what the line of code begins with, and the reason, with " | " between. What it names and what is
taken all the same is out of date, and fails as well. All that is not taken, of every folder, is written to BUILD/open.txt.

A template has as many copies as uses, and a function in a header one in each file that includes it: a branch of theirs is
taken when a copy takes it. Copies that differ, since the compiler knew more in one than in another, count each."""
import collections, concurrent.futures, json, os, pathlib, re, subprocess, sys

core = ("codec", "mem", "diag", "wrap", "snmp")
bound = 95.0
# What tests consist of, and programs that are no part of what is delivered.
no_subject = re.compile(r"""(testing|bench|fuzz|footprint|examples|build)/
                            |(.*/)?(naive|witness|golden|expected|render)[^/]*(/|$)
                            |.*_(test|bench|twin|rig|peer|fixture)\.(c|cpp|h)$""", re.X)
# Lines that say nothing: what the compiler puts at the end of a block are destructors.
without_code = re.compile(r"(} else {|[{}();\s]*)(//.*)?")
# Lines whose branches are the compiler's own: the search for who catches an exception, comparisons that it writes.
without_decision = re.compile(r"} catch \(.*|.*= default;.*")


def read_list(path):
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), 1):
        if line.strip() and not line.startswith("#"):
            parts = [part.strip() for part in line.split(" | ")]
            if len(parts) != 3 or not parts[2]:
                sys.exit(f"{path}:{number}: not FILE | CODE | REASON")
            yield tuple(parts[:2])


def folder_of(file):
    return file.split("/")[0]


def counts_of(notes):
    """What gcov says of one object's source files; of one that no test has run, that nothing in it has."""
    said = subprocess.run(["gcov", "--stdout", "--json-format", "--branch-probabilities", "--relative-only",
                           "--source-prefix", os.getcwd(), notes], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    return json.loads(said)["files"] if said.strip() else []


def decisions(branches):
    """How often each way was taken, of an if both in one tuple, without the two that a call has: back, and out by an
    exception."""
    ways, at = [], 0
    while at < len(branches):
        two = branches[at:at + 2]
        if any(branch["throw"] for branch in two):
            at += 2
        elif len(two) == 2 and two[0]["fallthrough"] != two[1]["fallthrough"]:
            ways.append((two[0]["count"], two[1]["count"]))
            at += 2
        else:
            ways.append((two[0]["count"],))
            at += 1
    return ways


def lines_of(file):
    """A source file's lines in one object, each with the place of the function that it is in. Of functions that begin at one
    place, the copies of a template, gcov tells each line copy by copy, and then once more of all together: left out. Where a
    function begins is run as often as it is called, though gcov counts there only what exceptions do of some."""
    begin = {function["name"]: (function["start_line"], function["start_column"]) for function in file["functions"]}
    called = {function["name"]: function["execution_count"] for function in file["functions"]}
    beginning = collections.Counter(line for line, _ in begin.values())
    copies = {name for name, (line, _) in begin.items() if beginning[line] > 1}
    told = {line["line_number"] for line in file["lines"] if line.get("function_name") in copies}
    for line in file["lines"]:
        name = line.get("function_name")
        if name in copies or line["line_number"] not in told:
            if name in begin and line["line_number"] == begin[name][0]:
                line["count"] = max(line["count"], called[name])
            yield line, begin.get(name)


class source:
    def __init__(self, name):
        self.text = pathlib.Path(name).read_text().splitlines()
        self.runs = collections.Counter()  # of each line
        self.ways = collections.defaultdict(dict)  # line -> function and kinds of decisions -> how often each way

    def code(self, number):
        return self.text[number - 1].strip() if number <= len(self.text) else ""

    def add(self, line, function):
        number = line["line_number"]
        if without_code.fullmatch(self.code(number)):
            return
        self.runs[number] += line["count"]
        ways = [] if without_decision.fullmatch(self.code(number)) else decisions(line["branches"])
        if ways:
            shape = function, tuple(map(len, ways))
            so_far = self.ways[number].get(shape, [(0,) * len(way) for way in ways])
            self.ways[number][shape] = [tuple(map(sum, zip(*both))) for both in zip(so_far, ways)]

    def taken(self, number):
        """Branches that were taken, and all. Where a line was run, a decision that was never come to does not count: the
        one that leads there does, or an exception."""
        never_run = self.runs[number] == 0
        ways = [way for copy in self.ways[number].values() for way in copy if any(way) or len(way) == 1 or never_run]
        return sum(count > 0 for way in ways for count in way), sum(map(len, ways))


def concerns(notes, folders):
    """Whether an object counts: of some folders theirs, and what their tests have run."""
    return not folders or notes.with_suffix(".gcda").exists() or any(f"/{folder}/" in str(notes) for folder in folders)


def read_sources(build, folders):
    sources = {}
    notes = sorted(str(path) for path in pathlib.Path(build).rglob("*.gcno") if concerns(path, folders))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as readers:
        for files in readers.map(counts_of, notes):
            if not all(os.path.exists(file["file"]) for file in files):
                continue  # left of what has another name now
            for file in files:
                name = os.path.relpath(file["file"])
                if name.startswith("..") or no_subject.match(name):
                    continue
                if folders and folder_of(name) not in folders and str(pathlib.PurePath(name).parent) not in folders:
                    continue
                for line, function in lines_of(file):
                    sources.setdefault(name, source(name)).add(line, function)
    return sources


def main():
    build, listed, wanted = sys.argv[1], set(read_list(sys.argv[2])), sys.argv[3:]
    folders, used, unexplained, everything = {}, set(), [], []
    for name, file in sorted(read_sources(build, wanted).items()):
        sums = folders.setdefault(folder_of(name), [0, 0, 0, 0])
        for number, count in sorted(file.runs.items()):
            taken, ways = file.taken(number)
            for at, addend in enumerate((count > 0, 1, taken, ways)):
                sums[at] += addend
            if taken == ways and count > 0:
                continue
            code = file.code(number)
            missing = "never run" if count == 0 else f"{taken} of {ways} branches"
            everything.append(f"{name}:{number}: {missing}: {code}")
            entry = next((e for e in listed if e[0] == name and code.startswith(e[1])), None)
            if entry:
                used.add(entry)
            elif folder_of(name) in core:
                unexplained.append(everything[-1])
    pathlib.Path(build, "open.txt").write_text("".join(f"{line}\n" for line in everything))
    failed = bool(unexplained)
    print(f"{'folder':12} {'lines':>8} {'branches':>9}")
    for folder, (lines, all_lines, taken, branches) in sorted(folders.items()):
        shares = 100 * lines / max(all_lines, 1), 100 * taken / branches if branches else 100.0
        low = folder not in core and min(shares) < bound
        failed = failed or low
        print(f"{folder:12} {shares[0]:7.1f}% {shares[1]:8.1f}%{'  below ' + str(bound) if low else ''}")
    for line in unexplained:
        print(line)
    for name, code in sorted(listed - used):
        if folder_of(name) in folders:
            failed = True
            print(f"{name}: taken, so that the list need not name it: {code}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
