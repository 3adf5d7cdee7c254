"""Which test enters which function: asked once of an instrumented library, with all tests."""
import bisect
import json
import os
import re
import subprocess
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import workshop


def build_recorder(jobs):
    """The library with every function recorded; its path."""
    folder = workshop.clean(workshop.WORK / "recorded")
    replaced, work = {}, []
    for source, command in workshop.commands().items():
        target = folder / (source.replace("/", "_") + ".o")
        replaced[workshop.object_of(command)] = str(target)
        work.append((command, workshop.ROOT / source, target))
    flags = ["-finstrument-functions", "-finstrument-functions-exclude-file-list=/usr/"]
    with ThreadPoolExecutor(jobs) as pool:
        for good, text in pool.map(lambda w: workshop.compile_as(*w, *flags), work):
            if not good:
                raise SystemExit("mutate: the recorded library does not compile: " + text)
    recorder = folder / "recorder.o"
    subprocess.run(["g++", "-O2", "-fPIC", "-c", str(Path(__file__).with_name("recorder.cpp")), "-o", str(recorder)],
                   check=True)
    library = folder / workshop.LIBRARY
    good, text = workshop.link_as(workshop.link_command(), replaced, [str(recorder)], library)
    if not good:
        raise SystemExit("mutate: the recorded library does not link: " + text)
    return library


def entered(record):
    """The places that a recording marks."""
    places = []
    with open(record, "rb") as file:
        position, size = 0, os.fstat(file.fileno()).st_size
        while position < size:
            try:
                position = os.lseek(file.fileno(), position, os.SEEK_DATA)
            except OSError:
                break
            file.seek(position)
            page = file.read(4096)
            places += [position + m.start() for m in re.finditer(rb"[^\0]", page)]
            position += len(page)
    return places


class Reach:
    """For each source the first lines of its functions, and the tests that enter each."""

    def __init__(self, functions):
        self.functions = functions  # source: sorted [[line, is lambda, [tests]]]

    def tests_at(self, mutant, source):
        rows = self.functions.get(source, [])
        anywhere = {t for row in rows for t in row[2]}
        if not mutant.inside:
            return anywhere
        found = set()
        i = bisect.bisect_right([row[0] for row in rows], mutant.line) - 1
        while i >= 0:
            # Every function that begins in that line, and outwards from a lambda to what holds it.
            line = rows[i][0]
            outer = False
            while i >= 0 and rows[i][0] == line:
                found |= set(rows[i][2])
                outer = outer or not rows[i][1]
                i -= 1
            if outer:
                break
        # Where the recording knows no function, any test of the source may come.
        return found or anywhere


def measure(tests, jobs, say):
    """Runs every test on the recorded library; the tests' times are set, what fails is left out. Kept in a file."""
    library = build_recorder(jobs)
    names = subprocess.run(["nm", "--defined-only", str(library)], capture_output=True, text=True, check=True).stdout
    addresses = sorted({int(line.split()[0], 16) for line in names.splitlines() if line.split()[1] in "tTwW"})
    answer = subprocess.run(["addr2line", "-f", "-C", "-e", str(library)], input="\n".join(map(hex, addresses)),
                            capture_output=True, text=True, check=True).stdout.splitlines()
    places = {}
    for address, name, where in zip(addresses, answer[::2], answer[1::2]):
        file, _, line = where.partition(":")
        line = re.match(r"\d+", line)
        path = os.path.normpath(os.path.join(workshop.BUILD, file))
        if line and path.startswith(str(workshop.ROOT) + "/"):
            places[address] = (os.path.relpath(path, workshop.ROOT), int(line.group()), "lambda" in name)
    rows = {place: set() for place in places.values()}

    def run(test):
        record = library.parent / (test.name.replace("/", "_") + ".record")
        record.unlink(missing_ok=True)
        status, test.seconds = test.run(library.parent, 600, record)
        if status == "passed" and record.exists():
            for place in entered(record):
                if place in places:
                    rows[places[place]].add(test.name)
        record.unlink(missing_ok=True)
        return status

    with ThreadPoolExecutor(jobs) as pool:
        states = list(pool.map(run, tests))
    failed = [t.name for t, s in zip(tests, states) if s != "passed"]
    for name in failed:
        say(f"left out, it fails on the unchanged program behind a shared library: {name}")
    functions = {}
    for (source, line, is_lambda), names in sorted(rows.items()):
        functions.setdefault(source, []).append([line, is_lambda, sorted(names)])
    return {"functions": functions, "seconds": {t.name: t.seconds for t in tests if t.name not in failed}}


def read_or_measure(tests, stamp, jobs, say):
    kept = workshop.WORK / "reach.json"
    if kept.exists():
        data = json.loads(kept.read_text())
        if data.get("stamp") == stamp:
            return data
    say("asking every test which functions it enters; kept until a source or a test changes")
    data = measure(tests, jobs, say) | {"stamp": stamp}
    kept.write_text(json.dumps(data))
    return data
