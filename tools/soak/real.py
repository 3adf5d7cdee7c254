"""Lets the top screen live through an hour of ten times the tour's events, as a rule under a sanitizer; see script/soak."""
import argparse
import contextlib
import json
import os
import re
import shutil
import signal
import sys
import time
from pathlib import Path

from terminal import ROOT, Failure, Program, Screen, Service, Tour, live

BUSY, MINUTE = 50, 60  # seconds: each minute ends with a rest, in which what was begun comes to its end
TIMES = 10
# For the program alone: the service has tests of its own, and is fast without.
SANITIZERS = {
    "ASAN_OPTIONS": "exitcode=66:detect_leaks=1",
    "LSAN_OPTIONS": "exitcode=66:print_suppressions=0",
    "UBSAN_OPTIONS": "print_stacktrace=1",
    # As the tests have it: the crash handler logs by design.
    "TSAN_OPTIONS": f"suppressions={ROOT}/tests/support/tsan.supp:exitcode=66:report_signal_unsafe=0",
}


def usual_rate():
    """Steps of the tour in a second; what moves by itself in it moves between them."""
    steps = json.loads((ROOT / "tools/tour/evening.json").read_text())
    return sum(step["do"] != "station" for step in steps) / (steps[-1]["at"] / 1000)


def faster(step):
    """What lasts, lasts so much shorter; pots that grow, and games that are played, move so much more often."""
    step = {name: value // TIMES if name in ("every", "ms") else value for name, value in step.items()}
    return {"every": 300 // TIMES, **step} if step["do"] == "play" else step


class Real:
    """One run: the children, what they have done until the last minute, and the pictures that were seen."""

    def __init__(self, options):
        self.options, self.tour = options, Tour(options.seed)
        self.build, self.out = Path(options.build_dir).resolve(), Path(options.out).resolve()
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir(parents=True)
        self.children, self.figures, self.pictures = [], {}, set()
        self.metrics = self.out / "metrics"
        self.growing = [step for step in self.tour.steps if step["do"] == "grow"][:4]

    def keep(self, child):
        self.children.append(child)
        return child

    def run(self):
        self.service = self.keep(Service(Path(self.options.service_dir).resolve(), self.out))
        self.screen = self.keep(Screen(self.out / "screen"))
        self.program = self.keep(Program(self.build, self.out / "program", self.screen.display, self.service.port, {
            "FPS": "20", "CPU_FPS": "200", "METRICS_FILE": str(self.metrics),
            **{name: f"{value}:log_path={self.out}/report" for name, value in SANITIZERS.items()}}))
        rate = TIMES * usual_rate() * MINUTE / BUSY
        self.add_levels()
        print(f"soak: {self.options.real} minutes, seed {self.options.seed}, {rate:.1f} steps a second for {BUSY} seconds of "
              f"each minute, from {self.build}", flush=True)
        for number in range(1, self.options.real + 1):
            self.minute(number, rate)
        self.end()

    def add_levels(self):
        for level in self.tour.levels:
            self.service.do({"do": "add", "level": level})

    def wait_until(self, moment):
        """Looks at the screen now and then, also where the steps have fallen behind."""
        while True:
            if time.monotonic() - self.looked > 2:
                self.looked = time.monotonic()
                self.looks += 1
                self.pictures.add(hash(self.screen.picture()))
            self.check()
            if time.monotonic() >= moment:
                return
            time.sleep(min(2, max(0, moment - time.monotonic())))

    def check(self):
        self.program.check()
        reports = self.reports()
        if reports:
            raise Failure(f"a sanitizer has reported: {', '.join(map(str, reports))}")

    def reports(self):
        return sorted(self.out.glob("report*"))

    def minute(self, number, rate):
        begin = self.looked = time.monotonic()
        self.pictures.clear()
        self.looks = steps = 0
        queue = []
        while time.monotonic() - begin < BUSY:
            if not queue:
                # As in most of the tour every pot grows: another one each time, for some steps stop them.
                self.service.do(faster(self.growing[steps % 4]))
                queue = list(self.tour.events())
            self.do(faster(queue.pop(0)))
            steps += 1
            self.wait_until(begin + steps / rate)
        for step in ("good", "up"):
            self.service.do({"do": step})
        self.wait_until(begin + MINUTE)
        self.row(number, steps)

    def do(self, step):
        if step["do"] == "add" and len(self.service.levels()) >= 4:
            return  # no screen has more
        if step["do"] == "restart":
            self.service.restart(0.2)
            self.add_levels()
        else:
            self.service.do(step)

    def totals(self):
        """What has been counted since the start, by the names of METRICS_FILE, over all labels but those of failures."""
        totals = {}
        if self.metrics.exists():
            for name, value in re.findall(r"^topscreen_(\w+_total)(?:\{.*\})? (\d+)$", self.metrics.read_text(), re.MULTILINE):
                totals[name] = totals.get(name, 0) + int(value)
        return totals

    def row(self, number, steps):
        before, self.figures = self.figures, self.totals()
        grown = {name: value - before.get(name, 0) for name, value in self.figures.items()}
        sample = self.program.sample()
        told = ", ".join(f"{title} {grown.get(name + '_total', 0)}" for title, name in (
            ("frames", "frames"), ("polls", "polls"), ("failed", "failed_polls"), ("events", "events"),
            ("log lines", "log_lines")))
        print(f"minute {number:2}: memory {sample['memory']} kB, descriptors {sample['descriptors']}, "
              f"threads {sample['threads']}, {told}, pictures {len(self.pictures)} of {self.looks}, steps {steps}", flush=True)
        for name in ("frames_total", "polls_total", "events_total"):
            if grown.get(name, 0) == 0:
                raise Failure(f"minute {number}: {name} stands still")
        if len(self.pictures) == 1 and self.looks > 5:
            raise Failure(f"minute {number}: the picture stands still")

    def end(self):
        """A sanitizer has its last word, on leaks among others, at an orderly end, which must not be cut short: it has ten
        seconds, however busy the machine is."""
        for task in os.listdir(f"/proc/{self.program.process.pid}/task"):
            with contextlib.suppress(OSError):  # only root may
                os.setpriority(os.PRIO_PROCESS, int(task), 0)
        self.program.stop(600)
        for child in self.children:
            child.stop(60)
        log = "".join((self.program.folder / "log" / name).read_text(errors="replace") for name in self.program.logs())
        if self.reports():
            raise Failure(f"a sanitizer has reported: {', '.join(map(str, self.reports()))}")
        if self.program.process.returncode != signal.SIGTERM:
            raise Failure(f"the program has ended with {self.program.process.returncode}, not {signal.SIGTERM.value}")
        if "The end has taken ten seconds" in log:
            raise Failure("the end took too long, and what is left was not looked at")
        print(f"soak: {self.options.real} minutes passed, no report, exit code {self.program.process.returncode}")

    def close(self):
        for child in reversed(self.children):
            child.stop()


def main():
    parser = argparse.ArgumentParser(prog="soak")
    parser.add_argument("--real", type=int, required=True, metavar="MINUTES")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--build-dir", default="build/asan")
    parser.add_argument("--service-dir", default="build/release", help="the build that the service is of")
    parser.add_argument("--out", default="build/soak")
    options = parser.parse_args()
    os.nice(10)
    return live(Real(options))


if __name__ == "__main__":
    sys.exit(main())
