"""Builds the library with one changed source, and runs tests on it away from everything else."""
import json
import os
import re
import shlex
import shutil
import signal
import subprocess
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
BUILD = ROOT / "build/mutate"
WORK = BUILD / "mutants"
LIBRARY = "libtopscreen_core.so"
# Pictures of time, browsers and whole tours: too slow or too fine for this.
LEFT_OUT = re.compile(r"^(console|demo|kslsim|mutate)/|^skin/Demo|^system/Timing$")
# Cases that need the code in the program itself: addr2line is asked for the program's file.
SKIPPED_CASES = {"system/Exit": "-Exit.FrequencyOf0IsADivisionFault:*CrashSignal.*"}

# A changed program may do anything: it gets process numbers of its own, so that it cannot signal others and leaves
# nobody behind, a /tmp of its own, the sources to read only, and no right to restart the machine.
CAGE = r"""
set -e
mount --make-rprivate /
mount --bind "$1" "$1"; mount --bind "$2" "$2"; mount -o bind,remount,ro "$1"; mount --bind "$2" "$2"
mount -t tmpfs none /tmp; mkdir -m 1777 /tmp/.X11-unix
ulimit -f 400000; ulimit -v 16000000; ulimit -c 0
cd "$3"; shift 3
exec setpriv --bounding-set -sys_boot --inh-caps -sys_boot "$@"
"""


def commands():
    """How each source becomes its object, by the path from the root."""
    found = {}
    for entry in json.loads((BUILD / "compile_commands.json").read_text()):
        if "/topscreen_core.dir/" in entry["command"]:
            found[str(Path(entry["file"]).relative_to(ROOT))] = shlex.split(entry["command"])
    return found


def link_command():
    line = subprocess.run(["ninja", "-C", str(BUILD), "-t", "commands", LIBRARY], capture_output=True, text=True,
                          check=True).stdout.strip().splitlines()[-1]
    words = shlex.split(line)
    return words[words.index("&&") + 1:len(words) - words[::-1].index("&&") - 1] if "&&" in words else words


def compile_as(command, source, object_file, *flags):
    """The compilation of command with another source in its place; true when it compiles."""
    words = [w for w in command if w not in ("-Werror", "ccache") and not w.endswith("/ccache")]
    if words[0] == "env":
        words = words[1:]
        while "=" in words[0]:
            words = words[1:]
    original = Path(words[words.index("-c") + 1])
    words[words.index("-c") + 1] = str(source)
    words[words.index("-o") + 1] = str(object_file)
    for option in ("-MF", "-MT", "-MQ"):
        while option in words:
            del words[words.index(option):words.index(option) + 2]
    words = [w for w in words if w not in ("-MD", "-MMD")]
    words[1:1] = ["-iquote", str(original.parent)]
    done = subprocess.run(words + ["-w", *flags], cwd=BUILD, capture_output=True, text=True)
    return done.returncode == 0, done.stderr


def object_of(command):
    return command[command.index("-o") + 1]


def link_as(command, replaced, extra, library):
    words = [replaced.get(w, w) for w in command]
    words[words.index("-o") + 1] = str(library)
    done = subprocess.run(words + extra, cwd=BUILD, capture_output=True, text=True)
    return done.returncode == 0, done.stderr


class Test:
    def __init__(self, entry):
        self.name = entry["name"]
        self.command = entry["command"]
        properties = {p["name"]: p["value"] for p in entry.get("properties", [])}
        self.folder = properties.get("WORKING_DIRECTORY", str(BUILD))
        self.environment = dict(e.split("=", 1) for e in properties.get("ENVIRONMENT", []))
        self.seconds = 0.0

    def run(self, library_folder, limit, record=None):
        """"passed", "failed" or "late", and the seconds that it took."""
        environment = {**os.environ, **self.environment, "DISABLE_REBOOT_ON_EXIT": "1", "no_proxy": "127.0.0.1",
                       "LD_LIBRARY_PATH": str(library_folder), "GTEST_FAIL_FAST": "1", "HOME": "/tmp"}
        environment.pop("DISPLAY", None)
        if self.name in SKIPPED_CASES:
            environment["GTEST_FILTER"] = SKIPPED_CASES[self.name]
        if record:
            environment["MUTATE_RECORD"] = str(record)
        started = time.monotonic()
        process = subprocess.Popen(
            ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc", "--mount", "bash", "-c", CAGE, "cage", str(ROOT),
             str(BUILD), self.folder, *self.command],
            env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            start_new_session=True)
        try:
            status = "passed" if process.wait(timeout=limit) == 0 else "failed"
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            status = "late"
        return status, time.monotonic() - started

    def limit(self):
        return 30 + 12 * self.seconds


def all_tests():
    listing = subprocess.run(["ctest", "--test-dir", str(BUILD), "--show-only=json-v1"], capture_output=True, text=True,
                             check=True).stdout
    return [Test(e) for e in json.loads(listing)["tests"] if "command" in e and not LEFT_OUT.search(e["name"])]


def clean(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    return folder
