"""usage: demo_test.py SOURCE_DIR BUILD_DIR

Runs script/demo as a user does: once to its end, and several times stopped by a signal at different moments. After
each run no process that it started may be left.
"""
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import uuid

SOURCE, BUILD = sys.argv[1], sys.argv[2]
STATIONS = ["loader", "logo", "first-level", "second-level", "third-level", "four-levels", "pots-rolling",
            "pots-later", "demo-mode", "level-removed", "service-gone", "service-back"]


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


class Demo:
    """One run of the demo, marked in its environment so that everything it starts can be found."""

    def __init__(self, out):
        self.mark = "DEMO_TEST_RUN=" + uuid.uuid4().hex
        environment = dict(os.environ, **dict([self.mark.split("=")]))
        environment.pop("DISPLAY", None)
        self.output = pathlib.Path(out, "output")
        # A shell that starts with SIGINT ignored could never be stopped by it.
        with self.output.open("w") as output:
            self.process = subprocess.Popen(
                [os.path.join(SOURCE, "script/demo"), "--no-build", "--build-dir", BUILD, "--out", out],
                env=environment, stdout=output, stderr=subprocess.STDOUT, start_new_session=True,
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


class DemoTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def picture(self, number, name):
        return os.path.join(self.folder.name, f"{number:02}-{name}.png")

    def test_plays_to_its_end(self):
        demo = Demo(self.folder.name)
        self.assertEqual(0, demo.process.wait(200), demo.text())
        self.assertEqual([], demo.left())
        seen = {}
        for number, name in enumerate(STATIONS, 1):
            width, rows = pixels(self.picture(number, name))
            self.assertEqual((1920, 1080), (width, len(rows)), name)
            self.assertNotIn(rows, seen.values(), name + " shows nothing new")
            seen[name] = rows
        for name, levels in [("first-level", 1), ("second-level", 2), ("third-level", 3), ("four-levels", 4),
                             ("level-removed", 3), ("service-gone", 3), ("service-back", 4)]:
            for level in range(levels):
                self.assertGreater(metal(seen[name], level, levels), 100, f"{name}: level {level} is not there")
                self.assertLess(metal(seen["logo"], level, levels), 70, "the ground alone is too bright to tell")
        # Digits of the first level roll between the two pictures.
        digits = lambda name: [row[3 * 141:3 * 735] for row in seen[name][238:329]]
        self.assertNotEqual(digits("pots-rolling"), digits("pots-later"))

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
    unittest.main(argv=sys.argv[:1], verbosity=2)
