"""Every test that faults.md names is one, and every test of Faults_test.cpp and Survival_test.cpp is named there."""
import re
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
TEST = re.compile(r"^TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\s*\)", re.M)
NAME = re.compile(r"`(\w+\.\w+)`")


def rows(page):
    """The cells of each line of its tables, but for their heads."""
    lines = [line for line in page.splitlines() if line.startswith("|")]
    cells = [[cell.strip() for cell in re.split(r"(?<!\\)\|", line.strip("|"))] for line in lines]
    return [row for row in cells if row[0] != "Fault" and not row[0].startswith("--")]


def tests(source):
    return {f"{suite}.{name}" for suite, name in TEST.findall(source)}


def faults(page, known, own):
    """What is wrong with the page, beside all tests there are and those that belong into it."""
    found, named = [], set()
    for row in rows(page):
        if len(row) != 4 or not all(row):
            found.append(f"not four cells: {row}")
            continue
        names = NAME.findall(row[3])
        if not names or NAME.sub("", row[3]).strip():
            found.append(f"no test, or more than tests: {row[0]}")
        named.update(names)
    found += [f"{name} is no test" for name in sorted(named - known)]
    return found + [f"{name} has no row" for name in sorted(own - named)]


class TheRule(unittest.TestCase):
    HEAD = "| Fault | Screen | Log | Tests |\n|---|---|---|---|\n"

    def test_a_name_that_is_no_test_is_told(self):
        page = self.HEAD + "| a | b | c | `A.B` `A.C` |\n"
        self.assertEqual(faults(page, {"A.B"}, set()), ["A.C is no test"])
        self.assertEqual(faults(page, {"A.B", "A.C"}, set()), [])

    def test_a_row_without_a_test_is_told(self):
        self.assertEqual(faults(self.HEAD + "| a | b | c | none yet |\n", set(), set()),
                         ["no test, or more than tests: a"])
        self.assertEqual(faults(self.HEAD + "| a | b | | `A.B` |\n", {"A.B"}, set()),
                         ["not four cells: ['a', 'b', '', '`A.B`']"])

    def test_a_test_without_a_row_is_told(self):
        self.assertEqual(faults(self.HEAD + "| a | b | c | `A.B` |\n", {"A.B"}, {"A.B", "A.D"}), ["A.D has no row"])

    def test_tests_of_every_kind_are_found(self):
        self.assertEqual(tests("TEST(A, B) {}\nTEST_F(C, D) {}\n  TEST(E, F)\nTEST_P(G,\n       H) {\n"),
                         {"A.B", "C.D", "G.H"})


class ThePage(unittest.TestCase):
    def test_names_tests_that_there_are(self):
        known = set().union(*(tests(file.read_text()) for file in HERE.parent.glob("*/*_test.cpp")))
        self.assertGreater(len(known), 1000)
        page = (HERE / "faults.md").read_text()
        self.assertGreater(len(rows(page)), 40)
        own = set().union(*(tests((HERE / f"{name}_test.cpp").read_text()) for name in ("Faults", "Survival")))
        self.assertEqual(faults(page, known, own), [])


if __name__ == "__main__":
    unittest.main()
