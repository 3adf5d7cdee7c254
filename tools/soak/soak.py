"""Lets the top screen live through many days in some minutes; see script/soak."""
import argparse
import collections
import datetime
import mmap
import os
import shutil
import struct
import sys
import time
import zoneinfo
from pathlib import Path

from terminal import Failure, Program, Screen, Service, Tour, live

SECOND = 10 ** 9
HALF_WRAP = 2 ** 31  # milliseconds: SDL's ticks become negative for who takes them as signed, or begin anew


class Clock:
    """The page that Clock.cpp reads: how fast the programs' time passes, and how much of it has passed."""
    FORM = struct.Struct("=Qqqqqqq")

    def __init__(self, file, wall, rate, ticks):
        file.write_bytes(bytes(self.FORM.size))
        with open(file, "r+b") as opened:
            self._page = mmap.mmap(opened.fileno(), self.FORM.size)
        self.wall, self.rate, self.ticks = wall, rate, ticks
        self._turn, self._since, self._passed = 0, time.monotonic_ns(), 0
        self._monotonic = self._since
        self._write()

    def _write(self):
        rest = (self._since, self._passed, self.rate * 1000, self._monotonic, self.wall * SECOND, self.ticks)
        self._page[0:8] = struct.pack("=Q", self._turn + 1)
        self._page[8:] = struct.pack("=qqqqqq", *rest)
        self._turn += 2
        self._page[0:8] = struct.pack("=Q", self._turn)

    def passed(self):
        """Nanoseconds of the programs' time since its beginning."""
        return self._passed + (time.monotonic_ns() - self._since) * self.rate

    def now(self):
        """Seconds since 1970 on the programs' clock."""
        return self.wall + self.passed() / SECOND

    def leap(self, moment):
        """To this moment, in seconds since 1970, unless it is over."""
        target = int((moment - self.wall) * SECOND)
        if target > self.passed():
            self._passed, self._since = target, time.monotonic_ns()
            self._write()


class Aged(Program):
    """A program on the clock of this run; what of SDL's renderer it has in use is counted."""
    COUNTS = struct.Struct("=qqq")

    def __init__(self, build, clock_file, folder, display, port, zone):
        folder.mkdir(parents=True)
        counts = folder / "counts"
        counts.write_bytes(bytes(self.COUNTS.size))
        with open(counts, "r+b") as opened:
            self._counts = mmap.mmap(opened.fileno(), self.COUNTS.size)
        super().__init__(build, folder, display, port, {
            "LD_PRELOAD": str(build / "tools/soak/libsoakclock.so"), "SOAK_CLOCK": str(clock_file), "SOAK_COUNTS": str(counts),
            "TZ": zone, "FPS": "30", "CPU_FPS": "200"})

    def counts(self):
        return dict(zip(("frames", "textures", "refused"), self.COUNTS.unpack(self._counts[:])))

    def look(self):
        return {**super().look(), "textures": self.counts()["textures"]}


def rest(tour, service, pause):
    """The menu without a game, with four levels, whatever was before. The levels go for some polls and come again: the
    program keeps to those that it knows as long as their number is the same."""
    for step in ({"do": "good"}, {"do": "up"}, {"do": "stop"}, {"do": "game", "event": "exited"}):
        service.do(step)
    service.do({"do": "init", "set": {"Locale": "C.UTF-8", "DecimalSeparator": ".", "ThousandSeparator": ","}})
    service.do({"do": "set", "state": {
        "IntegrityCheckData": "", "JackpotErrorString": "", "DemoMode": False, "Instructions": [], "ShowingPaytable": 0,
        "CurrentBet": 100, "MinBet": 20, "MaxBet": 500, "ExtraData": tour.extra[0], "LanguageMessages": tour.languages[0]}})
    pause()
    for level in service.levels():
        service.do({"do": "remove", "id": level})
    pause()
    for level in tour.levels:
        service.do({"do": "add", "level": {**level, "LastWinData": ""}})


def scenes(tour):
    """What is looked at on one noon after the other: a name and the steps from rest to it."""
    def game(name, number):
        return [{"do": "game", "event": how, "ID": number, "Name": name, "Type": 4} for how in ("loading", "loaded")]

    def state(**fields):
        return [{"do": "set", "state": fields}]

    crown, orchards = game("VesperCrown", 11), game("SevenOrchards", 12)
    return [
        ("paytable", crown + state(ShowingPaytable=1, CurrentBet=300)),
        ("instructions", state(Instructions=tour.instructions)),
        ("integrity text", state(IntegrityCheckData="INTEGRITY CHECK IN PROGRESS")),
        ("bonus page", crown + state(ShowingPaytable=2)),
        ("demo mode", state(DemoMode=True)),
        ("second game's paytable", orchards + state(ExtraData=tour.extra[1], ShowingPaytable=1)),
        ("jackpot error", state(JackpotErrorString="JACKPOT IS OUT OF SERVICE")),
        ("rules in German", crown + state(LanguageMessages=tour.languages[1], ShowingPaytable=3)),
        ("other pots", [{"do": "pot", "id": 0, "value": 187654321}]),
        ("two levels", [{"do": "remove", "id": level} for level in (1, 3)]),
        ("no level", [{"do": "remove", "id": level} for level in range(4)]),
        ("a game without levels", [{"do": "remove", "id": level} for level in range(4)] + crown),
    ]


class Soak:
    COLUMNS = ("memory", "descriptors", "threads", "textures")

    def __init__(self, options):
        self.options, self.tour = options, Tour(options.seed)
        self.build, self.out = Path(options.build_dir).resolve(), Path(options.out).resolve()
        shutil.rmtree(self.out, ignore_errors=True)
        self.out.mkdir(parents=True)
        self.zone = zoneinfo.ZoneInfo(options.zone)
        begin = datetime.datetime.combine(datetime.date.fromisoformat(options.start), datetime.time(), self.zone)
        self.clock = Clock(self.out / "clock", int(begin.timestamp()), options.rate, options.ticks)
        self.days, self.children = [], []

    def keep(self, child):
        self.children.append(child)
        return child

    def program(self, name, display):
        return self.keep(Aged(self.build, self.out / "clock", self.out / name, display, self.service.port,
                                 self.options.zone))

    def live(self, seconds):
        """Lets real seconds pass."""
        time.sleep(seconds)
        self.aged.check()

    def until(self, condition, otherwise):
        end = time.monotonic() + self.options.patience
        while not condition():
            if time.monotonic() > end:
                raise Failure(otherwise)
            self.live(0.1)

    def run(self):
        self.service = self.keep(Service(self.build, self.out))
        self.screen = self.keep(Screen(self.out / "screen"))
        self.other_screen = self.keep(Screen(self.out / "other-screen"))
        self.begun = self.clock.passed() / SECOND + self.clock.wall
        self.aged = self.program("aged", self.screen.display)
        self.until(lambda: self.aged.counts()["frames"] > 0, "the program draws nothing")
        self.rest()
        print(f"soak: {self.options.days} days from {self.options.start}, {self.options.zone}, seed {self.options.seed}, "
              f"a second in {1000 // self.options.rate} ms", flush=True)
        day = datetime.date.fromisoformat(self.options.start)
        for number in range(1, self.options.days + 1):
            self.day(number, day + datetime.timedelta(days=number - 1))
        self.judge()

    def rest(self):
        rest(self.tour, self.service, self.until_heard)

    def until_heard(self, programs=1):
        """Until so many programs have asked for events and have drawn what has come of them, however busy the machine is."""
        self.service.polls()
        polls = collections.Counter()

        def heard():
            polls.update(self.service.polls())
            return sum(count >= 3 for count in polls.values()) >= programs

        self.until(heard, "the program asks for no events")
        frames = self.aged.counts()["frames"]
        self.until(lambda: self.aged.counts()["frames"] >= frames + 5, "the program draws nothing")

    def sample(self):
        """In one state each time, and behind one way to it: pages and animations that are loaded take their memory."""
        self.rest()
        self.to_scene(scenes(self.tour)[0][1])
        self.to_scene([{"do": "game", "event": "exited"}])
        self.to_scene([{"do": "set", "state": {"IntegrityCheckData": "TAKING STOCK", "ShowingPaytable": 0}}])
        sample = self.aged.sample()
        self.rest()
        return sample

    def to_scene(self, steps, programs=1):
        for step in steps:
            self.service.do(step)
        self.until_heard(programs)
        self.live(10 / self.options.rate)

    def local(self, day, hour):
        return datetime.datetime.combine(day, datetime.time(hour), self.zone).timestamp()

    def moments(self, day):
        """What the day has, in order: seconds since 1970 and what happens then."""
        begin, end = self.local(day, 0), self.local(day + datetime.timedelta(days=1), 0)
        hours = [(begin + hour * 3600 + self.tour.minute(), "events") for hour in range(round((end - begin) / 3600))]
        edges = [(self.local(day, 12), "noon"), (end - 2, "midnight")]
        for hour in range(round((end - begin) / 3600)):
            before, after = (datetime.datetime.fromtimestamp(begin + hour * 3600 + step, self.zone).utcoffset()
                             for step in (-1, 0))
            if before != after:
                edges.append((begin + hour * 3600 - 2, "summer time"))
        first_tick = self.begun - self.options.ticks / 1000
        wrap = HALF_WRAP / 1000
        number = max(1, int((begin - first_tick) // wrap) + 1)
        if begin <= first_tick + number * wrap < end:
            edges.append((first_tick + number * wrap - 6, "wrap"))
        return sorted(hours + edges)

    def day(self, number, day):
        started, before = time.monotonic(), self.aged.counts()
        steps, seen, looked = 0, [], ""
        for moment, what in self.moments(day):
            self.clock.leap(moment)
            if what == "events":
                steps += self.events()
            elif what == "noon":
                sample, looked = self.noon(number, day)
            else:
                self.live((12 if what == "wrap" else 5) / self.options.rate)
                seen.append(what)
        after = self.aged.counts()
        row = {**sample, "frames": after["frames"] - before["frames"], "refused": after["refused"] - before["refused"],
               "logs": len(self.aged.logs())}
        if row["frames"] == 0:
            raise Failure(f"day {number}: not one frame was drawn")
        self.days.append(row)
        print(f"day {number:3} {day}: memory {row['memory']} kB, descriptors {row['descriptors']}, threads {row['threads']}, "
              f"textures {row['textures']}, frames {row['frames']}, refused {row['refused']}, logs {row['logs']}, "
              f"steps {steps}, {looked}; {', '.join(seen)}; {time.monotonic() - started:.1f} s", flush=True)

    def events(self):
        done = 0
        pause = self.options.moment / 1000
        for step in self.tour.events():
            if step["do"] == "add" and len(self.service.levels()) >= 4:
                continue  # no screen has more
            if step["do"] == "restart":
                self.service.restart(pause)
                done += 1
            else:
                done += self.service.do(step)
            self.live(pause / 3)
        self.live(pause)
        return done

    def until_alike(self, what):
        """Waits until both displays show the same; a picture in motion has the time to come to rest."""
        end = time.monotonic() + self.options.patience
        earlier = ({}, {})  # the latest pictures of each: what moves in turns is alike at another moment
        while True:
            pictures = self.screen.picture(), self.other_screen.picture()
            for own, picture in zip(earlier, pictures):
                own[hash(picture)] = True
                if len(own) > 50:
                    own.pop(next(iter(own)))
            if earlier[0].keys() & earlier[1].keys():
                return
            if time.monotonic() > end:
                self.screen.save(self.out / "aged.png")
                self.other_screen.save(self.out / "fresh.png")
                raise Failure(f"{what}: the picture differs from that of a fresh program; see aged.png and fresh.png in {self.out}")
            self.live(0.1)

    def noon(self, number, day):
        sample = self.sample()
        due = f"top_{day}.log"  # the levels that have come have left a line
        if due not in self.aged.logs():
            raise Failure(f"day {number}: there is no log file {due} at noon")
        fresh = self.program(f"fresh-{number}", self.other_screen.display)
        self.until(lambda: fresh.counts()["frames"] > 0, f"day {number}: the fresh program draws nothing")
        self.until_alike(f"day {number}, at rest")
        all_scenes = scenes(self.tour)
        name, steps = all_scenes[(number - 1) % len(all_scenes)]
        self.to_scene(steps, 2)
        self.until_alike(f"day {number}, {name}")
        fresh.stop()
        self.children.remove(fresh)
        shutil.rmtree(fresh.folder)
        return sample, f"alike at rest and with {name}"

    def judge(self):
        """The beginning of the second half beside its end."""
        half = self.days[len(self.days) // 2:]
        part = max(1, len(half) // 5)
        first, last = half[:part], half[-part:]
        memory = [min(row["memory"] for row in rows) for rows in (first, last)]
        grown = 100 * (memory[1] / memory[0] - 1)
        spread = [min(row["memory"] for row in half), max(row["memory"] for row in half)]
        print(f"soak: memory of the second half {spread[0]} to {spread[1]} kB, from its beginning to its end {grown:+.2f} %")
        if grown > 2:
            raise Failure(f"memory has grown by {grown:.2f} % in the second half: from {memory[0]:.0f} to {memory[1]:.0f} kB")
        # What comes and goes, as a connection or the pictures of a page, is there at some looks: growth moves both ends.
        for name in ("descriptors", "threads", "textures", "refused"):
            before, after = ([end(row[name] for row in rows) for end in (min, max)] for rows in (first, last))
            if after[0] > before[0] and after[1] > before[1]:
                raise Failure(f"{name} have grown in the second half: from {before} to {after}")
        if max(row["logs"] for row in self.days) > 40:
            raise Failure("there are more than 40 log files")
        print(f"soak: {len(self.days)} days passed")

    def close(self):
        for child in reversed(self.children):
            child.stop()


def main():
    parser = argparse.ArgumentParser(prog="soak")
    parser.add_argument("--days", type=int, default=100)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--start", default="2026-10-01", help="the first day")
    parser.add_argument("--zone", default="Europe/Vienna", help="of the programs")
    parser.add_argument("--ticks", type=int, default=0, help="milliseconds on SDL's counter at the start, as 4294900000")
    parser.add_argument("--rate", type=int, default=10, help="seconds of the programs in one, between two leaps")
    parser.add_argument("--moment", type=int, default=150, help="milliseconds for an hour's events")
    parser.add_argument("--patience", type=int, default=60, help="seconds until a picture has to be there")
    parser.add_argument("--build-dir", default="build/release")
    parser.add_argument("--out", default="build/soak")
    options = parser.parse_args()
    os.nice(10)
    return live(Soak(options))


if __name__ == "__main__":
    sys.exit(main())
