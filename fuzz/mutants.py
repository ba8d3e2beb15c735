"""What fuzz/mutate and fuzz/mutate_code have in common: the tests of a folder are built once and tried on one mutant after the
other, quick tests first, until one fails.

The tree is read only. A mutant is compiled apart and linked in front of the library, from which nothing that the mutant
defines is then taken. It is killed by a test that fails, and by taking many times the processor time or memory that the tests
take otherwise."""
import argparse, collections, concurrent.futures, itertools, json, math, os, pathlib, queue, random, resource, shlex, subprocess, sys

root = pathlib.Path(__file__).resolve().parent.parent
work = root / "build" / "mutate"
base = work / "base"
compiler = ["g++", "-std=c++20", "-w", "-fno-exceptions", "-fno-rtti"]
most_memory = 8 << 30

# A file of the tree, the line or None, what is changed, and the whole text of the file with the change.
mutant = collections.namedtuple("mutant", "file line what text")


def name_of(m):
    return f"{m.file}:{m.line}: {m.what}" if m.line else f"{m.file}: {m.what}"


def in_any_order(seed, mutants):
    """An order that changes elsewhere in the code leave as it is."""
    return sorted(mutants, key=lambda m: random.Random(f"{seed} {m.file} {m.what}").random())


def run(command, **how):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace", **how)


def run_or_exit(command, **how):
    done = run(command, **how)
    if done.returncode != 0:
        sys.exit(done.stdout)
    return done.stdout


def quick_first(seconds):
    """Names of tests in three groups, which take 3 %, 17 % and 80 % of the time."""
    names = sorted(seconds, key=seconds.get)
    total = list(itertools.accumulate(seconds[name] for name in names))
    for begin, end in ((-1, 0.03), (0.03, 0.2), (0.2, 1)):
        group = [n for n, t in zip(names, total) if begin * total[-1] < t <= end * total[-1]]
        if group:
            yield group, sum(seconds[name] for name in group) / total[-1]


class tests_of:
    def __init__(self, folder, left_out=()):
        """@param left_out the tests' objects, by the beginnings of their names, that take no part"""
        program = f"{folder}/{folder}_test"
        run_or_exit(["cmake", "-S", root, "-B", base, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DRIBKIT_TOOLS=OFF",
                     "-DCMAKE_CXX_FLAGS_RELEASE=-O2"])
        run_or_exit(["cmake", "--build", base, "--target", f"{folder}_test"])
        linking = [step for line in run_or_exit(["ninja", "-C", base, "-t", "commands", program]).splitlines()
                   for step in line.split(" && ") if f" -o {program} " in step]
        words = shlex.split(linking[-1])
        self.before, self.after = words[:1], words[1:]
        at = self.after.index("-o")
        del self.after[at : at + 2]
        self.after = [w for w in self.after if not (w.endswith(".o") and pathlib.Path(w).name.startswith(left_out or ("/",)))]
        self.measure(work / f"{folder}_unmutated")

    def measure(self, place):
        place.mkdir(parents=True, exist_ok=True)
        self.link(place, [])
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        if not self.passes(place, ["--gtest_output=json:times.json"], 3600):
            sys.exit(f"{pathlib.Path(sys.argv[0]).name}: the tests fail without a mutation, see {place}/test")
        now = resource.getrusage(resource.RUSAGE_CHILDREN)
        used = now.ru_utime + now.ru_stime - used.ru_utime - used.ru_stime
        seconds = {f"{suite['name']}.{test['name']}": float(test["time"][:-1]) + 1e-6
                   for suite in json.loads((place / "times.json").read_text())["testsuites"] for test in suite["testsuite"]}
        self.groups = [(":".join(names), 3 + math.ceil(10 * share * used)) for names, share in quick_first(seconds)]

    def link(self, place, objects):
        run_or_exit([*self.before, *objects, "-o", place / "test", *self.after], cwd=base)

    @staticmethod
    def passes(place, options, limit):
        command = ["prlimit", f"--cpu={limit}", f"--as={most_memory}", "--core=0", place / "test", "--gtest_brief=1",
                   "--gtest_fail_fast", *options]
        try:
            return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                  cwd=place, timeout=100 * limit).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def outcome(self, place, options):
        """@param place where unit.cpp is @return "killed", "did not compile" or "SURVIVED" """
        compiled = run([*compiler, *options, f"-I{root}", f"-I{root}/include", "-c", place / "unit.cpp", "-o", place / "unit.o"])
        if compiled.returncode != 0:
            return "did not compile"
        self.link(place, [place / "unit.o"])
        survives = all(self.passes(place, [f"--gtest_filter={names}"], limit) for names, limit in self.groups)
        return "SURVIVED" if survives else "killed"


def explained():
    """Lines FILE | MUTATION | REASON of mutants that change nothing that anybody could notice."""
    for line in (root / "fuzz/equivalent.txt").read_text().splitlines():
        if line.strip() and not line.startswith("#"):
            file, rest = line.split(" | ", 1)
            yield file, rest.rsplit(" | ", 1)[0].strip()  # code has bars, too


def options_of(about):
    """What both scripts take."""
    arguments = argparse.ArgumentParser(description=about, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--count", type=int, default=200, help="mutants of each folder")
    arguments.add_argument("--from", type=int, default=0, dest="first", help="how many of them were tried before")
    arguments.add_argument("--seed", type=int, default=1)
    arguments.add_argument("--jobs", type=int, default=os.cpu_count())
    arguments.add_argument("--only", default="", help="only mutations whose description has this text")
    arguments.add_argument("--list", action="store_true", help="name the mutations and try none")
    return arguments


def attempt_some(folder, mutants, wanted, tests, outcome, unchanged):
    """@param mutants all there are, in the order of the seed @param unchanged files which, compiled so, have to pass
    @param tests makes the tests @param outcome of (the tests, a folder of the mutant's own, the mutant)
    @return how many survived"""
    total = len(mutants)
    mutants = [m for m in mutants if wanted.only in name_of(m)]
    first = wanted.first % max(len(mutants), 1)
    mutants = (mutants[first:] + mutants[:first])[: wanted.count]
    if wanted.list:
        print(*map(name_of, mutants), sep="\n")
        return 0
    tests = tests()
    for file in unchanged:
        if outcome(tests, work / f"{folder}0", mutant(file, None, "", (root / file).read_text())) != "SURVIVED":
            sys.exit(f"{pathlib.Path(sys.argv[0]).name}: the tests fail with {file} as it is, see {work}/{folder}0/test")
    known = set(explained())
    results = {"killed": [], "did not compile": [], "equivalent": [], "SURVIVED": []}
    free = queue.Queue()
    for n in range(wanted.jobs):
        free.put(work / f"{folder}{n}")

    def attempt(m):
        if (str(m.file), m.what) in known:
            return "equivalent"
        place = free.get()
        try:
            return outcome(tests, place, m)
        finally:
            free.put(place)

    with concurrent.futures.ThreadPoolExecutor(wanted.jobs) as pool:
        tries = {pool.submit(attempt, m): m for m in mutants}
        for n, done in enumerate(concurrent.futures.as_completed(tries), 1):
            m = tries[done]
            result = done.result()
            results[result].append(name_of(m))
            print(f"[{n}/{len(mutants)}] {result}: {name_of(m)}", file=sys.stderr, flush=True)
    for result, names in results.items():
        if result != "killed":
            print(f"\n{result} ({len(names)}):", *sorted(names), sep="\n  ")
    print(f"\n{folder}: {len(mutants)} of {total} possible mutations from {first} on, seed {wanted.seed}: " +
          ", ".join(f"{len(names)} {result}" for result, names in results.items()))
    return len(results["SURVIVED"])
