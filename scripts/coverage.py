#!/usr/bin/env python3
"""Sums up what gcovr found, a folder a line, and judges it: in the core every branch is taken, but those that the list names;
elsewhere at least 95 of 100 lines and branches are.

    scripts/coverage.py COVERAGE.JSON UNCOVERED.TXT [FOLDER...]

A line of the list is FILE, what the line of code begins with, and the reason, with " | " between. What it names and what is
taken all the same is out of date, and fails as well."""
import json, pathlib, sys

core = ("codec", "mem", "diag", "wrap", "snmp")
bound = 95.0


def read_list(path):
    for number, line in enumerate(pathlib.Path(path).read_text().splitlines(), 1):
        if line.strip() and not line.startswith("#"):
            parts = [part.strip() for part in line.split(" | ")]
            if len(parts) != 3 or not parts[2]:
                sys.exit(f"{path}:{number}: not FILE | CODE | REASON")
            yield tuple(parts[:2])


def folder_of(file):
    return file.split("/")[0]


def main():
    report, listed = json.load(open(sys.argv[1])), set(read_list(sys.argv[2]))
    folders, used, open_branches = {}, set(), []
    for file in report["files"]:
        name = file["file"]
        if sys.argv[3:] and folder_of(name) not in sys.argv[3:] and str(pathlib.PurePath(name).parent) not in sys.argv[3:]:
            continue
        text = pathlib.Path(name).read_text().splitlines()
        sums = folders.setdefault(folder_of(name), [0, 0, 0, 0])
        for line in file["lines"]:
            if line.get("gcovr/noncode"):
                continue
            branches = line["branches"]
            taken = sum(1 for branch in branches if branch["count"] > 0)
            sums[0] += line["count"] > 0
            sums[1] += 1
            sums[2] += taken
            sums[3] += len(branches)
            if folder_of(name) not in core or (taken == len(branches) and line["count"] > 0):
                continue
            code = text[line["line_number"] - 1].strip()
            entry = next((e for e in listed if e[0] == name and code.startswith(e[1])), None)
            if entry:
                used.add(entry)
            else:
                missing = "never run" if line["count"] == 0 else f"{taken} of {len(branches)} branches"
                open_branches.append(f"{name}:{line['line_number']}: {missing}: {code}")
    failed = bool(open_branches)
    print(f"{'folder':12} {'lines':>8} {'branches':>9}")
    for folder, (lines, all_lines, taken, branches) in sorted(folders.items()):
        shares = 100 * lines / max(all_lines, 1), 100 * taken / max(branches, 1)
        low = folder not in core and min(shares) < bound
        failed = failed or low
        print(f"{folder:12} {shares[0]:7.1f}% {shares[1]:8.1f}%{'  below ' + str(bound) if low else ''}")
    for line in open_branches:
        print(line)
    for name, code in sorted(listed - used):
        if folder_of(name) in folders:
            failed = True
            print(f"{name}: taken, so that the list need not name it: {code}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
