#!/usr/bin/env python3
"""usage: bench/redraw.py [--fps N] [--seconds N] [--rounds N] [--driver software|opengl] [--scene NAME]... [NAME=PROGRAM]...

What the running program costs in scenes that an operator sees: processor time for each frame that is due, of its
draw thread (and of those of OpenGL), of the whole process, and of the X server. Each scene is run by the program as it draws
(changes), with TOPSCREEN_REDRAW=all (all), and by each other PROGRAM given, say one built from an older commit, in
turn, all in one run; the ratio is that to the first other PROGRAM, or to all. The frames of a second are those of
METRICS_FILE (all of them, also those in which nothing changes), which is written every ten. Build first: script/build release.
"""
import argparse
import json
import os
import pathlib
import random
import re
import shutil
import signal
import statistics
import subprocess
import sys
import tempfile
import time
import urllib.request

ROOT = pathlib.Path(__file__).resolve().parents[1]
TICK = os.sysconf("SC_CLK_TCK")
TEXT = "Last won 28.09.2026 21:14  -  1,284,711.20 EUR, in this house and on this very machine"


def levels(**more):
    names = ("GOLD", "SILVER", "BRONZE", "EMERALD")
    return [{"do": "add", "level": {"Name": name, "Currency": "EUR", "Mode": 1, "CurrentPot": 10 ** (9 - i) + 87654,
                                    "MinPot": 0, "MaxPot": 10 ** 10, "LastWinData": TEXT, **more}}
            for i, name in enumerate(names)]


GROW = [{"do": "grow", "id": i, "every": 250, "min": 100, "max": 950, "seed": i + 1} for i in range(4)]
TOUR = json.loads((ROOT / "tools/tour/evening.json").read_text())
GAME = [{"do": "game", "event": event, "ID": 11, "Name": "VesperCrown", "Type": 4} for event in ("loading", "loaded")]
PAGE = next(step for step in TOUR if "ShowingPaytable" in step.get("state", {}))
# Not from the start: a terminal that stands on a paytable keeps the loader.
PAGE = [{"at": 3000, **step} for step in (
    {"do": "set", "state": {"CurrentBet": 100, "MinBet": 20, "MaxBet": 500}}, *GAME,
    {"do": "set", "state": PAGE["state"]})]
# Without a graphics card OpenGL draws on threads of its own.
DRAWING = ("draw", "llvmpipe")
# Name: steps at the start, seconds until it is measured.
SCENES = {
    "scrolling": (levels() + GROW, 12),
    "rolling": (levels(LastWinData="") + GROW, 12),
    "standing": (levels(LastWinData=""), 30),
    "paytable": (PAGE, 12),
    "win": (levels() + [{"do": "win", "id": 0}], 9),
}


def processor_time(pid, threads=None):
    """Seconds that a process has used, or its threads of which a name begins so."""
    files = [pathlib.Path(f"/proc/{pid}/stat")]
    if threads:
        files = [task / "stat" for task in pathlib.Path(f"/proc/{pid}/task").iterdir()
                 if (task / "comm").read_text().startswith(threads)]
    ticks = 0
    for file in files:
        fields = file.read_text().rsplit(")", 1)[1].split()
        ticks += int(fields[11]) + int(fields[12])
    return ticks / TICK


class Children:
    """Processes that end together."""

    def __init__(self):
        self.children = []

    def x_server(self, env):
        """Starts one, and puts its display into the environment."""
        number = random.randrange(100, 900)
        while pathlib.Path(f"/tmp/.X{number}-lock").exists():
            number += 1
        env["DISPLAY"] = self.display = f":{number}"
        server = self.start(["Xvfb", self.display, "-screen", "0", "1920x1080x24", "-nolisten", "tcp", "-noreset"],
                            env)
        while not pathlib.Path(f"/tmp/.X11-unix/X{number}").exists():
            time.sleep(0.05)
        return server

    def start(self, command, env, **more):
        for stream in ("stdout", "stderr"):
            more.setdefault(stream, subprocess.DEVNULL)
        child = subprocess.Popen([str(c) for c in command], env=env, **more)
        self.children.append(child)
        return child

    def end(self):
        for child in reversed(self.children):
            if child.poll() is None:
                child.send_signal(signal.SIGTERM)
        for child in self.children:
            try:
                child.wait(15)
            except subprocess.TimeoutExpired:
                child.kill()
                child.wait()


class Stage(Children):
    """An X server, the simulator and the program, in a scene."""

    def __init__(self, program, scene, driver, fps, redraw, **more):
        super().__init__()
        self.folder = pathlib.Path(tempfile.mkdtemp())
        steps, self.warm_up = SCENES[scene]
        env = dict(os.environ, DISABLE_REBOOT_ON_EXIT="1", no_proxy="127.0.0.1", FPS=str(fps), SDL_AUDIODRIVER="dummy",
                   SDL_RENDER_DRIVER=driver, SDL_VIDEODRIVER="x11", LOG_FILENAME=str(self.folder / "log"),
                   HOME_DIR=f"{self.folder}/", METRICS_FILE=f"{self.folder}/figures", WORKING_DIR=f"{ROOT}/build/release/skin/")
        env.update(more)
        env.pop("TOPSCREEN_REDRAW", None)
        if redraw:
            env["TOPSCREEN_REDRAW"] = redraw
        if driver == "software":
            env["SDL_FRAMEBUFFER_ACCELERATION"] = "0"
        self.server = self.x_server(env)
        at = [{"at": 0, **step} for step in steps]
        (self.folder / "scene.json").write_text(json.dumps(
            [{"at": 0, "do": "init", "set": {"Locale": "C.UTF-8", "DecimalSeparator": ".", "ThousandSeparator": ","}}]
            + at))
        simulator = self.start([ROOT / "build/release/tools/kslsim/kslsim", "--port", "0", "--control-port", "0",
                                "--scenario", self.folder / "scene.json"], env, stdout=subprocess.PIPE, text=True)
        port = int(simulator.stdout.readline())
        self.program = self.start([program, f"127.0.0.1:{port}"], env, cwd=f"{ROOT}/build/release/skin")

    def frames(self):
        """How long the program has lived, and its frames so far, as it told last; nothing of one that does not tell."""
        file = self.folder / "figures"
        told = file.read_text() if file.exists() else ""
        return [float(found[1]) for name in ("uptime_seconds", "frames_total")
                if (found := re.search(rf"^topscreen_{name} (\S+)$", told, re.MULTILINE))]

    def measure(self, seconds):
        """Milliseconds of processor time in each second: of the draw thread, of the program, of the X server. And frames
        a second, of a program that tells them for long enough."""
        def taken():
            return (processor_time(self.program.pid, DRAWING), processor_time(self.program.pid),
                    processor_time(self.server.pid))
        time.sleep(self.warm_up)
        before, start, first = taken(), time.monotonic(), self.frames()
        time.sleep(seconds)
        after, passed, last = taken(), time.monotonic() - start, self.frames()
        rate = (last[1] - first[1]) / (last[0] - first[0]) if first and last and last > first else 0
        return (*(1000 * (b - a) / passed for a, b in zip(before, after)), rate)

    def end(self):
        super().end()
        shutil.rmtree(self.folder)


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n")[0][7:])
    parser.add_argument("--fps", type=int, default=20)
    parser.add_argument("--seconds", type=float, default=20)
    parser.add_argument("--rounds", type=int, default=1)
    parser.add_argument("--driver", choices=("software", "opengl"), default="software")
    parser.add_argument("--scene", action="append", choices=SCENES)
    parser.add_argument("others", nargs="*", metavar="NAME=PROGRAM")
    told = parser.parse_args()
    program = ROOT / "build/release/topscreen"
    variants = [(*other.split("=", 1), None) for other in told.others]
    variants += [("all", program, "all"), ("changes", program, None)]
    print(f"driver {told.driver}, {told.fps} frames a second, {told.seconds:g} s, median of {told.rounds}")
    print("milliseconds of processor time a frame that is due; the ratio is that of draw thread and X server")
    print(f"{'scene':10} {'program':10} {'draw':>8} {'X server':>8} {'both':>8} {'ratio':>6} {'process':>8} {'frames/s':>8}")
    for scene in told.scene or SCENES:
        taken = {name: [] for name, *_ in variants}
        for _ in range(told.rounds):
            for name, path, redraw in variants:
                stage = Stage(path, scene, told.driver, told.fps, redraw)
                try:
                    taken[name].append(stage.measure(told.seconds))
                finally:
                    stage.end()
        first = None
        for name, *_ in variants:
            draw, process, server, rate = (statistics.median(v[i] for v in taken[name]) for i in range(4))
            draw, process, server = (spent / told.fps for spent in (draw, process, server))
            both = draw + server
            first = first or both
            print(f"{scene:10} {name:10} {draw:8.2f} {server:8.2f} {both:8.2f} {both / first:6.3f} {process:8.2f} "
                  f"{f'{rate:.1f}' if rate else '-':>8}",
                  flush=True)
    return 0


if __name__ == "__main__":
    sys.exit(main())
