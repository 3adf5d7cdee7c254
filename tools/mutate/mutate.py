"""Changes the program in small ways, one at a time, and tells which changes no test notices. See script/mutate."""
import argparse
import fnmatch
import hashlib
import os
import random
import re
import subprocess
import sys
import threading
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import workshop
from mutants import mutants_of
from reach import Reach, read_or_measure

INVISIBLE = Path(__file__).with_name("invisible.txt")
PRODUCT = ("vendelo-sdl2/", "src/")
said = threading.Lock()


def say(text):
    with said:
        print(text, flush=True)


def squeezed(text):
    return " ".join(text.split())


class Case:
    """One change of one source."""

    def __init__(self, source, text, mutant):
        self.source, self.text, self.mutant = source, text, mutant
        self.before = text[mutant.start:mutant.end]
        self.whole_line = squeezed(text.splitlines()[mutant.line - 1])
        self.which = ""  # " #2" for the second of the same changes in a line

    def key(self):
        """As a row of the invisible ones begins: the source, and the line with the change. Such a row means all of
        the same changes in that line."""
        return (self.source, self.whole_line + " | " + squeezed(f"{self.before} -> {self.mutant.becomes}"))

    def own_key(self):
        """The same for this one alone."""
        return (self.source, self.key()[1] + self.which)

    def __str__(self):
        return f"{self.source}:{self.mutant.line}: {self.mutant.kind}: {squeezed(self.before)} -> {self.mutant.becomes}"


def known_invisible():
    """Rows "source | line | change | reason", each field as the report prints it."""
    rows = {}
    if INVISIBLE.exists():
        for line in INVISIBLE.read_text().splitlines():
            if line.strip() and not line.startswith("#"):
                if line.count(" | ") < 3 or not line.rsplit(" | ", 1)[1].strip():
                    raise SystemExit(f"mutate: {INVISIBLE.name}: not four fields: {line}")
                source, rest = line.split(" | ", 1)  # the source's line may hold the sign as well
                change, reason = rest.rsplit(" | ", 1)
                rows[(source.strip(), change.strip())] = reason.strip()
    return rows


def product_sources():
    listed = subprocess.run(["git", "ls-files", "*.cpp"], cwd=workshop.ROOT, capture_output=True, text=True,
                            check=True).stdout.split()
    return [f for f in listed if f.startswith(PRODUCT) and not f.endswith("/main.cpp")]


def chosen(sources, count, seed):
    """All changes of the sources in an order that the seed alone decides, at most one of each line while others are left."""
    cases = []
    for source in sources:
        text = (workshop.ROOT / source).read_text()
        found = [Case(source, text, m) for m in sorted(mutants_of(text), key=lambda m: m.start)]
        alike = {}
        for case in found:
            alike.setdefault((case.mutant.line, case.key()), []).append(case)
        for same in alike.values():
            for number, case in enumerate(same, 1):
                case.which = f" #{number}" if len(same) > 1 else ""
        cases += found
    random.Random(seed).shuffle(cases)
    seen, first, rest = set(), [], []
    for case in cases:
        place = (case.source, case.mutant.line)
        (rest if place in seen else first).append(case)
        seen.add(place)
    return first + rest, len(cases)


def class_of(source):
    """The tests that carry the name of the source's class: TApplicationLoop.cpp is tested by TApplication... too."""
    folder = Path(source).parent.name
    stem = Path(source).stem
    headers = {Path(h).stem for h in subprocess.run(["git", "ls-files", "*.h"], cwd=workshop.ROOT, capture_output=True,
                                                    text=True, check=True).stdout.split() if not h.startswith("tests/")}
    names = sorted((h for h in headers if stem.startswith(h)), key=len)
    return re.compile(rf"^{re.escape(folder)}/{re.escape(names[-1] if names else stem)}")


def stamp_of():
    """Of all that decides which test comes where."""
    places = ["tests", *PRODUCT, "include", "tools", f":!{INVISIBLE.relative_to(workshop.ROOT)}"]
    listed = subprocess.run(["git", "ls-files", "-s", *places], cwd=workshop.ROOT, capture_output=True, text=True,
                            check=True).stdout
    changed = subprocess.run(["git", "diff", "HEAD", "--", *places], cwd=workshop.ROOT, capture_output=True, text=True,
                             check=True).stdout
    return hashlib.sha256((listed + changed).encode()).hexdigest()


class Examination:
    def __init__(self, options):
        self.options = options
        self.tests = workshop.all_tests()
        data = read_or_measure(self.tests, stamp_of(), options.jobs, say)
        self.tests = [t for t in self.tests if t.name in data["seconds"]]
        for test in self.tests:
            test.seconds = data["seconds"][test.name]
        self.reach = Reach(data["functions"])
        self.compile = workshop.commands()
        self.link = workshop.link_command()
        self.invisible = known_invisible()
        self.results = {"killed": [], "survived": [], "invisible": [], "stillborn": []}
        self.benches = [workshop.clean(workshop.WORK / f"bench{i}") for i in range(options.jobs)]
        self.lock = threading.Lock()

    def order(self, case):
        """The tests of the class, then the others that enter the function, the quick ones first."""
        reaching = self.reach.tests_at(case.mutant, case.source)
        own = class_of(case.source)
        tests = [t for t in self.tests if t.name in reaching]
        return sorted(tests, key=lambda t: (not own.search(t.name), t.seconds))

    def try_case(self, case, bench):
        """killed, survived or stillborn, and the test that noticed it."""
        changed = bench / Path(case.source).name
        changed.write_text(case.mutant.apply(case.text))
        command = self.compile[case.source]
        if not workshop.compile_as(command, changed, bench / "changed.o")[0]:
            return "stillborn", ""
        library = bench / workshop.LIBRARY
        if not workshop.link_as(self.link, {workshop.object_of(command): str(bench / "changed.o")}, [], library)[0]:
            return "stillborn", ""
        tests = self.order(case)
        for test in tests:
            status, _ = test.run(bench, test.limit())
            if status != "passed":
                return "killed", f"{test.name}{' (late)' if status == 'late' else ''}"
        return "survived", f"{len(tests)} tests" if tests else "no test comes here"

    def take(self, cases):
        """Tries cases until enough have compiled."""
        left = iter(cases)
        running = 0

        def work(bench):
            nonlocal running
            while True:
                with self.lock:
                    done = sum(len(self.results[k]) for k in ("killed", "survived", "invisible"))
                    if done + running >= self.options.count:
                        return
                    case = next(left, None)
                    running += case is not None
                if case is None:
                    return
                reason = self.invisible.get(case.key()) or self.invisible.get(case.own_key())
                if reason:
                    verdict, by = "invisible", reason
                else:
                    verdict, by = self.try_case(case, bench)
                with self.lock:
                    running -= 1
                    self.results[verdict].append((case, by))
                done = sum(len(self.results[k]) for k in ("killed", "survived", "invisible"))
                if done % 50 == 0 and verdict != "stillborn":
                    say(f"{done} tried, {len(self.results['survived'])} survived")
                if verdict == "survived" or self.options.verbose:
                    say(f"{verdict}: {case}   [{by}]")
                if verdict == "survived":
                    say(f"    {' | '.join(case.own_key())} | ")

        with ThreadPoolExecutor(len(self.benches)) as pool:
            for job in [pool.submit(work, bench) for bench in self.benches]:
                job.result()

    def report(self, of):
        tried = sum(len(self.results[k]) for k in ("killed", "survived", "invisible"))
        counted = {k: len(v) for k, v in self.results.items()}
        by_class = sum(bool(class_of(c.source).search(by)) for c, by in self.results["killed"])
        share = 100.0 * counted["survived"] / tried if tried else 0.0
        say(f"seed {self.options.seed}: {tried} of {of} changes: {counted['killed']} noticed ({by_class} by the tests of the"
            f" class), {counted['invisible']} known to be invisible, {counted['survived']} survived ({share:.1f} in 100);"
            f" {counted['stillborn']} more did not compile")
        return 0 if share <= self.options.allowed else 1


def main():
    parser = argparse.ArgumentParser(prog="script/mutate", description=__doc__)
    parser.add_argument("files", nargs="*", help="sources or patterns of them, from the root; default: all of the product")
    parser.add_argument("--count", type=int, default=100, help="changes to try that compile")
    parser.add_argument("--seed", default="1", help="which ones, and in which order")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--allowed", type=float, default=3.0, help="survivors in 100 that still end with 0")
    parser.add_argument("--list", action="store_true", help="only print them")
    parser.add_argument("--verbose", action="store_true", help="print also what noticed each")
    options = parser.parse_args()

    sources = product_sources()
    if options.files:
        sources = [s for s in sources if any(fnmatch.fnmatch(s, f.removeprefix("./")) for f in options.files)]
        if not sources:
            raise SystemExit("mutate: no source of the product is meant by " + " ".join(options.files))
    cases, of = chosen(sources, options.count, options.seed)
    if options.list:
        for case in cases[:options.count]:
            print(case)
        return 0
    missing = [r for r in known_invisible() if r[0] in sources and r not in {k for c in cases for k in (c.key(), c.own_key())}]
    for row in missing:
        say(f"of {INVISIBLE.name}, no longer in the sources: {' | '.join(row)}")
    examination = Examination(options)
    examination.take(cases)
    return examination.report(of)


sys.exit(main())
