"""The layers that docs/ARCHITECTURE.md tells are the ones that the sources include."""
import re
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


def table_behind(text, heading):
    """The cells of the first table behind the heading, without its two head lines."""
    lines = text[text.index(heading):].splitlines()
    rows = lines[next(i for i, l in enumerate(lines) if l.startswith("|")):]
    end = next((i for i, l in enumerate(rows) if not l.startswith("|")), len(rows))
    return [[cell.strip() for cell in row.strip("|").split("|")] for row in rows[2:end]]


def ticked(text):
    return re.findall(r"`([^`]+)`", text)


class House:
    """The page's layers and exceptions, and which file belongs where."""

    def __init__(self, page):
        self.places = []  # (folder, beginning of the file's name, layer); the top layer is 0
        for layer, (_, where, _) in enumerate(table_behind(page, "## Layers")):
            for part in where.split(";"):
                folder, *names = ticked(part)
                self.places += [(folder, name, layer) for name in names or [""]]
        self.upward = {(ticked(a)[0], ticked(b)[0]) for a, b, _ in table_behind(page, "Upward, and why:")}

    def layer(self, file):
        """None for a file that the page does not know."""
        folder, name = str(Path(file).parent).replace("include/", "src/"), Path(file).name
        fitting = [(len(start), layer) for place, start, layer in self.places
                   if place == folder and name.startswith(start)]
        return max(fitting)[1] if fitting else None

    def exception(self, source, target):
        """The row of the page that allows this include, if one does."""
        for row in self.upward:
            if Path(source).name.startswith(row[0]) and Path(target).name.startswith(row[1]):
                return row
        return None

    def faults(self, includes):
        """A text for each include that goes upward, each file of no layer and each exception that nothing needs."""
        found, used = [], set()
        for source, target in includes:
            above, below = self.layer(source), self.layer(target)
            if above is None or below is None:
                found.append(f"{source if above is None else target} stands in no layer")
            elif below < above:
                row = self.exception(source, target)
                used.add(row)
                if row is None:
                    found.append(f"{source} includes {target}, which is above it")
        return found + [f"nothing of {a} includes {b} any more" for a, b in sorted(self.upward - used)]


def product_includes():
    listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "vendelo-sdl2", "src",
                             "include"], cwd=ROOT, capture_output=True, text=True, check=True).stdout.split()
    files = {f for f in listed if f.endswith((".h", ".cpp")) and (ROOT / f).exists()}
    for source in sorted(files):
        for name in re.findall(r'^#include "([^"]+)"', (ROOT / source).read_text(), re.M):
            beside = str(Path(source).parent / name)
            target = next((f for f in (name, f"include/{name}", f"src/{name}", beside) if f in files), None)
            if target is None:
                raise AssertionError(f"{source} includes {name}, which is nowhere")
            yield source, target


PAGE = """## Layers
| Layer | Where | What |
|---|---|---|
| Top | `src/top` | x |
| Middle | `lib`: `A`, `Be` | x |
| Base | `lib`: `Bell`; `src/low` | x |

Upward, and why:

| From | To | Why |
|---|---|---|
| `Bell` | `Ant` | x |
"""


class TheRule(unittest.TestCase):
    def faults(self, *includes):
        return House(PAGE).faults([("lib/Bell.cpp", "lib/Ant.h"), *includes])

    def test_downward_and_within_a_layer_is_allowed(self):
        self.assertEqual(self.faults(("src/top/x.cpp", "include/top/x.h"), ("include/top/x.h", "lib/Ant.h"),
                                     ("lib/Ant.cpp", "lib/Bell.h"), ("lib/Beat.h", "src/low/z.h")), [])

    def test_upward_is_told(self):
        self.assertEqual(self.faults(("src/low/z.cpp", "lib/Ant.h")),
                         ["src/low/z.cpp includes lib/Ant.h, which is above it"])
        self.assertEqual(self.faults(("lib/Bell.h", "lib/Beat.h")),
                         ["lib/Bell.h includes lib/Beat.h, which is above it"])

    def test_a_file_of_no_layer_is_told(self):
        self.assertEqual(self.faults(("lib/Cat.h", "lib/Ant.h")), ["lib/Cat.h stands in no layer"])

    def test_an_exception_that_nothing_needs_is_told(self):
        self.assertEqual(House(PAGE).faults([]), ["nothing of Bell includes Ant any more"])


class TheSources(unittest.TestCase):
    def test_include_what_the_page_allows(self):
        house = House((ROOT / "docs/ARCHITECTURE.md").read_text())
        includes = list(product_includes())
        self.assertGreater(len(includes), 300)
        self.assertEqual(house.faults(includes), [])


if __name__ == "__main__":
    unittest.main()
