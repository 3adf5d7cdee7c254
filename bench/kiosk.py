#!/usr/bin/env python3
"""usage: bench/kiosk.py [--fps N] [--seconds N] [--rounds N] [--keep-picture NAME]

The running program beside a browser (chromium, without a graphics card) that shows the same scene as a page, of the
same pictures of the demo skin: four growing levels, four lines that scroll. Processor time of all its processes and
of its X server for each frame that it shows, and its memory (proportional set size of all its processes). Both in
turn, each on an X server of its own. Build first: script/build release.
"""
import argparse
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
import urllib.parse

import redraw

ROOT = redraw.ROOT
SKIN = ROOT / "build/release/skin/VESPERA/TOP_SKIN"
SCENE = "scrolling"
# What a kiosk does without: everything that a browser does on its own.
BROWSER = ["chromium", "--kiosk", "--no-sandbox", "--disable-gpu", "--no-first-run", "--no-default-browser-check",
           "--disable-background-networking", "--disable-component-update", "--disable-default-apps",
           "--disable-domain-reliability", "--disable-extensions", "--disable-sync", "--disable-breakpad",
           "--disable-client-side-phishing-detection", "--disable-features=Translate,OptimizationHints,MediaRouter,"
           "InterestFeedContentSuggestions,CalculateNativeWinOcclusion", "--metrics-recording-only", "--mute-audio",
           "--password-store=basic", "--use-mock-keychain", "--host-resolver-rules=MAP * ~NOTFOUND",
           "--allow-file-access-from-files", "--hide-scrollbars", "--window-position=0,0", "--window-size=1920,1080",
           "--enable-logging=stderr"]
TOLD = re.compile(r"frames (\d+) at ([0-9.]+) ms")


def processes(root):
    """The process and everything that it has started, also what has been left to others meanwhile."""
    parents, found = {}, {root}
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                fields = (entry / "stat").read_text().rsplit(")", 1)[1].split()
            except OSError:
                continue
            parents[int(entry.name)] = (int(fields[1]), int(fields[3]))
    session = parents[root][1]
    found |= {pid for pid, (_, its) in parents.items() if its == session == root}
    while more := {pid for pid, (parent, _) in parents.items() if parent in found} - found:
        found |= more
    return found


def taken(pids):
    """Seconds of processor time for each process."""
    times = {}
    for pid in pids:
        try:
            times[pid] = redraw.processor_time(pid)
        except OSError:
            pass  # it has ended
    return times


def memory(pids):
    """Megabytes, with what several processes share divided among them."""
    kilobytes = 0
    for pid in pids:
        try:
            text = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
        except OSError:
            continue
        kilobytes += int(re.search(r"^Pss:\s+(\d+)", text, re.M).group(1))
    return kilobytes * 1024 / 1e6


class Browser:
    """The page in a browser, on an X server of its own."""
    name = "browser"

    def __init__(self, fps, folder):
        self.log = folder / "browser.log"
        page = (ROOT / "bench/kiosk.html").as_uri() + "?" + urllib.parse.urlencode(
            {"fps": fps, "skin": SKIN.as_uri() + "/", "text": redraw.TEXT})
        env = dict(os.environ, HOME=str(folder))
        self.stage = redraw.Children()
        self.server = self.stage.x_server(env)
        self.program = self.stage.start([*BROWSER, f"--user-data-dir={folder}/data", page], env,
                                        stderr=self.log.open("w"), start_new_session=True)

    def frames(self):
        """Frames shown, and seconds since the page was opened."""
        told = TOLD.findall(self.log.read_text(errors="replace"))
        if not told:
            sys.exit(f"kiosk: the page shows no frames: {self.log.read_text(errors='replace')[-2000:]}")
        return int(told[-1][0]), float(told[-1][1]) / 1000


class Program:
    """The program, fed by the simulator, on an X server of its own."""
    name = "topscreen"

    def __init__(self, fps, folder):
        self.figures = folder / "figures"
        self.stage = redraw.Stage(ROOT / "build/release/topscreen", SCENE, "software", fps, None,
                                  METRICS_FILE=str(self.figures))
        self.server, self.program = self.stage.server, self.stage.program

    def frames(self):
        text = self.figures.read_text()
        return tuple(float(re.search(rf"^\w*{name} ([0-9.e+]+)", text, re.M).group(1))
                     for name in ("_frames_total", "uptime_seconds"))


def measure(show, seconds, picture):
    """Processor milliseconds a frame, of the program and of the X server; frames a second; memory."""
    time.sleep(20)
    shown, then, before = show.frames(), time.monotonic(), taken(processes(show.program.pid))
    server = redraw.processor_time(show.server.pid)
    time.sleep(seconds)
    pids = processes(show.program.pid)
    after, passed = taken(pids), time.monotonic() - then
    server = redraw.processor_time(show.server.pid) - server
    spent = sum(after.values()) - sum(before[pid] for pid in after if pid in before)
    megabytes = memory(pids)
    last = show.frames()
    rate = (last[0] - shown[0]) / (last[1] - shown[1])
    if picture:
        subprocess.run(["import", "-silent", "-window", "root", f"{picture}-{show.name}.png"], check=True,
                       env=dict(os.environ, DISPLAY=show.stage.display))
    return 1000 * spent / passed / rate, 1000 * server / passed / rate, rate, megabytes


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n\n")[0][7:])
    parser.add_argument("--fps", type=int, default=20)
    parser.add_argument("--seconds", type=float, default=30)
    parser.add_argument("--rounds", type=int, default=1)
    parser.add_argument("--keep-picture", metavar="NAME")
    told = parser.parse_args()
    if told.seconds < 12:
        parser.error("figures come every ten seconds: --seconds 12 is the least")
    if not shutil.which(BROWSER[0]):
        sys.exit(f"kiosk: {BROWSER[0]} is missing: script/bootstrap")
    figures = {show: [] for show in (Browser, Program)}
    for _ in range(told.rounds):
        for kind in figures:
            folder = pathlib.Path(tempfile.mkdtemp())
            show = kind(told.fps, folder)
            try:
                figures[kind].append(measure(show, told.seconds, told.keep_picture))
            finally:
                show.stage.end()
                shutil.rmtree(folder, ignore_errors=True)
    print(f"{told.fps} frames a second asked for, {told.seconds:g} s, median of {told.rounds}")
    print(f"{'':10} {'shown/s':>8} {'CPU ms a frame':>15} {'X server':>9} {'both':>7} {'memory MB':>10}")
    both, size = {}, {}
    for kind, rounds in figures.items():
        own, server, rate, size[kind] = (statistics.median(values) for values in zip(*rounds))
        both[kind] = own + server
        print(f"{kind.name:10} {rate:8.1f} {own:15.2f} {server:9.2f} {both[kind]:7.2f} {size[kind]:10.1f}")
    print(f"processor time a frame shown: ratio {both[Program] / both[Browser]:.3f}, at most 0.25 is wanted")
    print(f"memory: ratio {size[Program] / size[Browser]:.3f}, at most 0.28 is wanted")
    return 0


if __name__ == "__main__":
    sys.exit(main())
