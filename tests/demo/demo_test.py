"""usage: demo_test.py SOURCE_DIR BUILD_DIR CASE

Runs script/demo as a user does: once to its end, and several times stopped by a signal at different moments. After
each run no process that it started may be left. It also shows skins of one's own.
"""
import json
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import uuid

SOURCE, BUILD = sys.argv[1], sys.argv[2]
TOUR = json.loads(pathlib.Path(SOURCE, "tools/tour/evening.json").read_text())
STATIONS = ["loader"] + [step["name"] for step in TOUR if step["do"] == "station"]


def pixels(path):
    """The rows of a picture, three bytes a pixel."""
    size = subprocess.check_output(["identify", "-format", "%w %h", path], text=True).split()
    width, height = map(int, size)
    raw = subprocess.check_output(["convert", path, "-depth", "8", "rgb:-"])
    assert len(raw) == 3 * width * height, path
    return width, [raw[3 * width * y:3 * width * (y + 1)] for y in range(height)]


def metal(rows, level, levels):
    """How bright the upper edge of a level's frame is, in its brightest row: light metal on a dark ground."""
    top = {1: 478, 2: 269 + 418 * level, 3: 160 + 318 * level, 4: 151 + 218 * level}[levels]
    left = 51 + 48 * level
    return max(sum(row[3 * (left + 200):3 * (left + 700)]) / 1500 for row in rows[top + 8:top + 16])


def mean(rows, x, y, w, h):
    return sum(sum(row[3 * x:3 * (x + w)]) for row in rows[y:y + h]) / (3 * w * h)


def peak(rows, x, y, w, h):
    """The brightest of all channels in a rectangle."""
    return max(max(row[3 * x:3 * (x + w)]) for row in rows[y:y + h])


class Demo:
    """One run of the demo, marked in its environment so that everything it starts can be found."""

    def __init__(self, out, *options, display=None, folder=None):
        self.mark = "DEMO_TEST_RUN=" + uuid.uuid4().hex
        environment = dict(os.environ, **dict([self.mark.split("=")]))
        environment.pop("DISPLAY", None)
        if display:
            environment["DISPLAY"] = display
        self.output = pathlib.Path(out, "output")
        # A shell that starts with SIGINT ignored could never be stopped by it.
        with self.output.open("w") as output:
            self.process = subprocess.Popen(
                [os.path.join(SOURCE, "script/demo"), "--no-build", "--build-dir", BUILD, "--out", out, *options],
                cwd=folder, env=environment, stdout=output, stderr=subprocess.STDOUT, start_new_session=True,
                preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))

    def left(self):
        found = []
        for pid in filter(str.isdigit, os.listdir("/proc")):
            try:
                environment = pathlib.Path(f"/proc/{pid}/environ").read_bytes().split(b"\0")
                if self.mark.encode() in environment:
                    found.append((pid, pathlib.Path(f"/proc/{pid}/cmdline").read_text().replace("\0", " ")))
            except OSError:
                pass
        return found

    def running(self, name):
        return any(name in [word.split("/")[-1] for word in command.split(" ")[:2]] for _, command in self.left())

    def text(self):
        return self.output.read_text()

    def wait_for(self, condition, seconds=40):
        deadline = time.monotonic() + seconds
        while not condition():
            if self.process.poll() is not None or time.monotonic() > deadline:
                raise AssertionError("not reached:\n" + self.text())
            time.sleep(0.02)


class Case(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def picture(self, number, name):
        return os.path.join(self.folder.name, f"{number:02}-{name}.png")

    def found_all_files(self, demo):
        """Nothing that the program looked for was missing."""
        said = pathlib.Path(self.folder.name, "topscreen.out").read_text(errors="replace")
        for complaint in ["Unable to load", "Tried to load", "cannot be read", "has no attribute", "Could not find",
                          "Could not create", "Can not show"]:
            self.assertNotIn(complaint, said, demo.text())


class TourTest(Case):
    def test_plays_to_its_end_without_a_report(self):
        demo = Demo(self.folder.name)
        self.assertEqual(0, demo.process.wait(500), demo.text())
        self.assertEqual([], demo.left())
        self.found_all_files(demo)
        said = pathlib.Path(self.folder.name, "topscreen.out").read_text(errors="replace")
        for report in ["Sanitizer", "runtime error:"]:
            self.assertNotIn(report, said)


class SkinTest(Case):
    """A skin of one's own: a copy of the demo's with a plain green ground and without the logo."""

    def setUp(self):
        super().setUp()
        self.skin = os.path.join(self.folder.name, "my skin")
        shutil.copytree(os.path.join(BUILD, "skin"), self.skin)
        top = os.path.join(self.skin, "VESPERA/TOP_SKIN")
        subprocess.check_call(["convert", "-size", "1920x1080", "xc:#107030", os.path.join(top, "Background.png")])
        os.remove(os.path.join(top, "logo.png"))

    def assert_green(self, rows):
        self.assertEqual(bytes([0x10, 0x70, 0x30]) * 200, rows[1000][:600])

    def test_is_shown_up_to_the_station_asked_for(self):
        # The folder is meant from where the user stands.
        demo = Demo(self.folder.name, "--skin", "my skin", "--until", "first-level", folder=self.folder.name)
        self.assertEqual(0, demo.process.wait(60), demo.text())
        self.assertEqual([], demo.left())
        pictures = sorted(path.name for path in pathlib.Path(self.folder.name).glob("*.png"))
        self.assertEqual([f"{n:02}-{name}.png" for n, name in enumerate(STATIONS[:4], 1)], pictures)
        rows = pixels(self.picture(4, "first-level"))[1]
        self.assert_green(rows)
        self.assertGreater(metal(rows, 0, 1), 100, "the level is not there")
        missing = f"Unable to load image file {self.skin}/VESPERA/TOP_SKIN/logo"
        self.assertEqual(1, demo.text().count(missing), demo.text())
        self.assertEqual(1, demo.text().count("the program says"), demo.text())

    def test_is_shown_on_a_display(self):
        # A number out of the way of servers that look for a free one from 0 up.
        display = f":{random.randrange(1000, 1900)}"
        server = subprocess.Popen(["Xvfb", display, "-screen", "0", "1920x1080x24", "-nolisten", "tcp", "-noreset"],
                                  stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        for _ in range(200):
            if subprocess.run(["xdpyinfo", "-display", display], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode == 0:
                break
            self.assertIsNone(server.poll(), "the X server did not start")
            time.sleep(0.05)
        demo = Demo(self.folder.name, "--skin", self.skin, display=display)
        self.addCleanup(lambda: demo.process.poll() is None and demo.process.terminate())
        demo.wait_for(lambda: "running on display " + display in demo.text())
        shot = os.path.join(self.folder.name, "shot.png")

        def green():
            subprocess.check_call(["import", "-silent", "-window", "root", shot], env=dict(os.environ, DISPLAY=display))
            return pixels(shot)[1][1000][:3] == bytes([0x10, 0x70, 0x30])

        demo.wait_for(green)
        for pid, command in demo.left():
            if command.startswith(os.path.join(BUILD, "topscreen")):
                os.kill(int(pid), signal.SIGTERM)
        self.assertEqual(0, demo.process.wait(30), demo.text())
        self.assertIn("the program has ended", demo.text())
        self.assertIn("the program says: Unable to load image file", demo.text())
        self.assertEqual([], demo.left())

    def refused(self, *options):
        demo = Demo(self.folder.name, *options)
        self.assertEqual(2, demo.process.wait(10), demo.text())
        return demo.text()

    def test_a_folder_that_is_no_skin_is_refused(self):
        self.assertIn("it has no folder VESPERA/TOP_SKIN", self.refused("--skin", os.path.join(self.skin, "Games")))
        self.assertIn("it has no folder VESPERA/TOP_SKIN", self.refused("--skin", "/nowhere/at/all"))

    def test_another_tour_is_played(self):
        tour = pathlib.Path(self.folder.name, "tour.json")
        tour.write_text('[{"at": 0, "do": "add", "level": {"Currency": "EUR", "CurrentPot": 5000}},'
                        ' {"at": 2000, "do": "station", "name": "our-level"}]')
        demo = Demo(self.folder.name, "--tour", "tour.json", "--until", "our-level", folder=self.folder.name)
        self.assertEqual(0, demo.process.wait(60), demo.text())
        rows = pixels(self.picture(2, "our-level"))[1]
        self.assertGreater(metal(rows, 0, 1), 100, "the tour's level is not there")

    def test_a_tour_that_is_missing_is_refused(self):
        self.assertIn("--tour is missing", self.refused("--tour", "nothing.json"))

    def test_a_tour_that_is_no_scenario_is_refused(self):
        pathlib.Path(self.folder.name, "tour.json").write_text("[")
        demo = Demo(self.folder.name, "--tour", "tour.json", folder=self.folder.name)
        self.assertEqual(2, demo.process.wait(10), demo.text())
        self.assertIn("is no scenario", demo.text())

    def test_an_unknown_station_is_refused_with_their_names(self):
        text = self.refused("--until", "first")
        for name in STATIONS:
            self.assertIn(" " + name, text)


class DemoTest(Case):
    def test_plays_to_its_end(self):
        demo = Demo(self.folder.name)
        self.assertEqual(0, demo.process.wait(280), demo.text())
        self.assertEqual([], demo.left())
        seen = {}
        for number, name in enumerate(STATIONS, 1):
            width, rows = pixels(self.picture(number, name))
            self.assertEqual((1920, 1080), (width, len(rows)), name)
            self.assertNotIn(rows, seen.values(), name + " shows nothing new")
            seen[name] = rows
        for name, levels in [("first-level", 1), ("second-level", 2), ("third-level", 3), ("four-levels", 4),
                             ("game-overlay", 4), ("second-game", 4), ("demo-mode", 4), ("levels-back", 4),
                             ("jackpot-recovered", 4), ("roulette", 4), ("service-gone", 4), ("service-back", 4)]:
            for level in range(levels):
                self.assertGreater(metal(seen[name], level, levels), 100, f"{name}: level {level} is not there")
                self.assertLess(metal(seen["logo"], level, levels), 70, "the ground alone is too bright to tell")
        for name in ["integrity-text", "jackpot-error", "instructions"]:
            for level in [1, 2]:
                self.assertLess(metal(seen[name], level, 4), 70, f"{name}: level {level} is still there")
        # Digits of the first level roll between the two pictures.
        digits = lambda name: [row[3 * 141:3 * 735] for row in seen[name][238:329]]
        self.assertNotEqual(digits("pots-rolling"), digits("pots-later"))
        # Texts stand where they belong, in bright letters on the ground.
        self.assertGreater(peak(seen["integrity-text"], 600, 100, 700, 150), 200)
        self.assertGreater(peak(seen["jackpot-error"], 600, 830, 700, 150), 200)
        self.assertLess(peak(seen["logo"], 600, 830, 700, 150), 150)
        # The winning level in the middle is the brightest there is; the others lie in the dark.
        for level in ["gold", "silver", "bronze", "emerald"]:
            rows = seen["win-" + level]
            self.assertGreater(peak(rows, 560, 480, 800, 120), 200, level)
            self.assertLess(mean(rows, 1300, 20, 500, 60), 30, level)
        # Amounts are written over the page, and change with the bet.
        field = lambda name: [row[3 * 500:3 * 690] for row in seen[name][312:368]]
        self.assertNotEqual(field("paytable"), field("paytable-other-bet"))
        self.assertEqual(field("paytable-other-bet"), field("paytable-german"))
        for name in ["paytable", "paytable-other-bet", "second-paytable"]:
            self.assertGreater(peak(seen[name], 500, 312, 190, 56), 200, name)
        # All eight buttons; the second has no function and no light.
        lit = lambda x, y: mean(seen["instructions"], x + 30, y + 30, 100, 80)
        for x in [88, 512, 730, 952, 1172, 1388, 1670]:
            self.assertGreater(lit(x, 856), 2 * lit(300, 737), x)
        self.found_all_files(demo)

    def stop(self, condition, number, status):
        demo = Demo(self.folder.name)
        demo.wait_for(lambda: condition(demo))
        os.kill(demo.process.pid, number)
        self.assertEqual(status, demo.process.wait(30), demo.text())
        self.assertEqual([], demo.left())

    def test_stopped_while_the_x_server_starts(self):
        self.stop(lambda demo: demo.running("Xvfb"), signal.SIGINT, 130)

    def test_stopped_while_the_loader_waits(self):
        self.stop(lambda demo: demo.running("topscreen"), signal.SIGINT, 130)

    def test_stopped_in_the_middle_of_the_tour(self):
        self.stop(lambda demo: "demo: first-level" in demo.text(), signal.SIGINT, 130)

    def test_stopped_by_a_terminating_signal(self):
        self.stop(lambda demo: demo.running("kslsim"), signal.SIGTERM, 143)

    def test_a_program_that_ends_early_fails_the_demo(self):
        demo = Demo(self.folder.name)
        demo.wait_for(lambda: "demo: logo" in demo.text())
        for pid, command in demo.left():
            if command.startswith(os.path.join(BUILD, "topscreen")):
                os.kill(int(pid), signal.SIGKILL)
        self.assertEqual(1, demo.process.wait(60), demo.text())
        self.assertIn("the program has ended", demo.text())
        self.assertEqual([], demo.left())


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], sys.argv[3]], verbosity=2)
