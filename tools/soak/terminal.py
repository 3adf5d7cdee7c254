"""What lives in a run of the soak: the X server, the program, the service, and what happens to them."""
import json
import os
import random
import signal
import struct
import subprocess
import sys
import time
import urllib.error
import urllib.request
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class Failure(Exception):
    """What the whole run fails with, in one line."""


class Child:
    """A process, gone with this object's stop()."""

    def __init__(self, command, environment, output, folder=None, **more):
        with open(output, "ab") as opened:
            self.process = subprocess.Popen(command, env={**os.environ, **environment}, stdout=opened, stderr=opened,
                                            stdin=subprocess.DEVNULL, cwd=folder, start_new_session=True, **more)

    def alive(self):
        return self.process.poll() is None

    def stop(self, seconds=20):
        self.process.terminate()
        try:
            self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            self.kill()

    def kill(self):
        self.process.kill()
        self.process.wait()


class Screen(Child):
    """An X server whose picture lies in a file."""

    def __init__(self, folder):
        folder.mkdir(parents=True)
        self._frame = folder / "Xvfb_screen0"
        reading, writing = os.pipe()
        super().__init__(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1920x1080x24", "-nolisten", "tcp", "-noreset",
                          "-fbdir", str(folder)], {}, folder / "xvfb.txt", pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as opened:
            self.display = ":" + opened.readline().strip()
        if self.display == ":":
            raise Failure("the X server did not start")

    def picture(self):
        content = self._frame.read_bytes()
        return content[struct.unpack(">I", content[:4])[0]:]

    def save(self, file):
        subprocess.run(["convert", "xwd:" + str(self._frame), str(file)], check=False)


class Program(Child):
    """The top screen on a display of its own, with the variables that are given and those that every run has."""

    def __init__(self, build, folder, display, port, environment):
        folder.mkdir(parents=True, exist_ok=True)
        self.folder, self.output = folder, folder / "topscreen.out"
        skin = str(build / "skin") + "/"
        super().__init__([str(build / "topscreen"), f"127.0.0.1:{port}"], {
            "DISPLAY": display, "SDL_RENDER_DRIVER": "software", "SDL_FRAMEBUFFER_ACCELERATION": "0",
            "SDL_AUDIODRIVER": "dummy", "WORKING_DIR": skin, "HOME_DIR": str(folder) + "/",
            "LOG_FILENAME": str(folder / "log" / "top.log"), **environment}, self.output, skin)

    def anonymous(self):
        """Kilobytes of memory that no file stands behind."""
        for line in Path(f"/proc/{self.process.pid}/smaps_rollup").read_text().splitlines():
            if line.startswith("Anonymous:"):
                return int(line.split()[1])
        raise Failure("this kernel does not tell the anonymous memory of a process")

    def look(self):
        return {"memory": self.anonymous(), "descriptors": len(os.listdir(f"/proc/{self.process.pid}/fd")),
                "threads": len(os.listdir(f"/proc/{self.process.pid}/task"))}

    def sample(self):
        """What must not grow. The least of some looks: a worker or a call may be under way."""
        looks = []
        for _ in range(5):
            looks.append(self.look())
            time.sleep(0.05)
        return {name: min(look[name] for look in looks) for name in looks[0]}

    def logs(self):
        return sorted(file.name for file in (self.folder / "log").glob("*.log"))

    def check(self):
        if not self.alive():
            raise Failure(f"the program has ended with {self.process.returncode}; see {self.output}")


class Service:
    """The simulator, on the same port through all its lives."""

    def __init__(self, build, folder):
        self._tool, self._output = build / "tools/kslsim/kslsim", folder / "kslsim.out"
        self.port = self._control = 0
        self._start()

    def _start(self):
        self._seen = 0
        self._output.write_bytes(b"")  # the ports stand in its first lines
        self._child = Child([str(self._tool), "--port", str(self.port), "--control-port", str(self._control)], {},
                            self._output)
        for _ in range(600):
            lines = self._output.read_text().splitlines()
            if len(lines) > 1:
                self.port, self._control = int(lines[0].split()[-1]), int(lines[1].split()[-1])
                return
            if not self._child.alive():
                break
            time.sleep(0.05)
        raise Failure("the simulator did not start")

    def restart(self, pause):
        """Killed, as a service that has crashed: what it knew is gone."""
        self._child.kill()
        time.sleep(pause)
        self._start()

    def stop(self, seconds=20):
        self._child.stop(seconds)

    def do(self, step):
        """False when the step does not fit, as a win on a level that is not there."""
        request = urllib.request.Request(f"http://127.0.0.1:{self._control}/api/do", json.dumps(step).encode())
        try:
            urllib.request.urlopen(request, timeout=30).close()
            return True
        except urllib.error.HTTPError as error:
            error.close()
            return False

    def _get(self, path):
        with urllib.request.urlopen(f"http://127.0.0.1:{self._control}/api/{path}", timeout=30) as answer:
            return json.load(answer)

    def levels(self):
        return [level["Id"] for level in self._get("state")["state"]["JackpotData"]]

    def polls(self):
        """The clients of the requests for events that have been answered since the last question."""
        entries = self._get(f"log?since={self._seen}")
        self._seen = max([self._seen] + [entry["n"] for entry in entries])
        return [entry.get("client") for entry in entries if entry.get("method") == "game.popEvents" and "answer" in entry]


class Tour:
    """The steps of the demo's tour, and some that it lacks, at random but for the seed."""
    REPLIES = ("refuse", "http500", "html", "notxml", "cut", "empty", "fault", "rpcfault", "large", "deep", "i8", "utf8")
    TYPES = ("JackpotData", "ActiveGame", "CurrentBet", "LanguageMessages")

    def __init__(self, seed):
        self._random = random.Random(seed)
        steps = json.loads((ROOT / "tools/tour/evening.json").read_text())
        self.steps = [{k: v for k, v in step.items() if k not in ("at", "note")} for step in steps if step["do"] != "station"]
        self.levels = [step["level"] for step in self.steps if step["do"] == "add"]
        self.extra = [step["state"]["ExtraData"] for step in self.steps if "ExtraData" in step.get("state", {})]
        self.languages = [step["state"]["LanguageMessages"] for step in self.steps
                          if "LanguageMessages" in step.get("state", {})]
        self.instructions = next(step["state"]["Instructions"] for step in self.steps
                                 if step.get("state", {}).get("Instructions"))

    def minute(self):
        return self._random.randrange(3400)

    def events(self):
        """Some steps, or what a service does that is not well."""
        draw = self._random.random()
        if draw < 0.6:
            begin = self._random.randrange(len(self.steps))
            return self.steps[begin:begin + self._random.randrange(2, 7)]
        if draw < 0.75:
            return [self._random.choice((
                {"do": "set", "state": {"CurrentBet": self._random.randrange(10 ** 6), "MinBet": 1, "MaxBet": 10 ** 6}},
                {"do": "set", "state": {"LanguageMessages": self._random.choice(self.languages)}},
                {"do": "set", "state": {"ShowingPaytable": self._random.randrange(11)}},
                {"do": "set", "state": {"ExtraData": self._random.choice(self.extra)}},
                {"do": "set", "state": {"IntegrityCheckData": self._random.choice(("", "CHECK", "C" * 300))}},
                {"do": "set", "state": {"JackpotErrorString": self._random.choice(("", "OUT OF ORDER"))}},
                {"do": "remove", "id": self._random.randrange(4)},
                {"do": "add", "level": self._random.choice(self.levels)},
                {"do": "game", "event": "loaded", "ID": 99, "Name": "Nowhere", "Type": 4}))]
        if draw < 0.9:
            return [{"do": "play", "id": level, "bets": 3000, "bet": 5000, "share": 400, "show": 900,
                     "seed": self._random.randrange(1000)} for level in range(self._random.randrange(1, 5))]
        if draw < 0.96:
            return [{"do": "bad", "method": "*", "reply": self._random.choice(self.REPLIES),
                     "calls": self._random.randrange(1, 6)}]
        return [self._random.choice(({"do": "forget"}, {"do": "down", "ms": 200}, {"do": "restart"}))]


def live(soak):
    """Runs it to its end, which comes to its children too; the exit status."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    try:
        soak.run()
    except Failure as failure:
        print(f"soak: FAILED: {failure}")
        return 1
    finally:
        soak.close()
    return 0
