"""The changes that script/mutate finds in a source, each from a small piece of code."""
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tools/mutate"))
from mutants import mutants_of  # noqa: E402


def changes(source, kind=None):
    """(what stood there, what it becomes) of each change, one kind or all."""
    return [(source[m.start:m.end], m.becomes) for m in mutants_of(source) if kind in (None, m.kind)]


def in_function(code):
    return "int f(int a, int b) {\n  " + code + "\n}\n"


class Changes(unittest.TestCase):
    def test_number_becomes_one_more_and_one_less(self):
        self.assertEqual(changes("int a = 5;"), [("5", "6"), ("5", "4")])
        self.assertEqual(changes("int a = 0;"), [("0", "1")])
        self.assertEqual(changes("unsigned a = 0x10u;"), [("0x10u", "0x11u"), ("0x10u", "0xfu")])
        self.assertEqual(changes("float a = 2.0f;"), [("2.0f", "3.0f"), ("2.0f", "1.0f")])
        self.assertEqual(changes("double a = 0.25;"), [("0.25", "0.3125"), ("0.25", "0.125")])

    def test_truth_and_characters_change(self):
        self.assertEqual(changes("bool a = true;"), [("true", "false")])
        self.assertEqual(changes("char a = 'x';"), [("'x'", "'~'")])

    def test_text_gets_longer_and_quoted_quotes_stay(self):
        self.assertEqual(changes(r'const char* a = "b\"c";'), [(r'"b\"c"', r'"b\"c~"')])

    def test_comments_and_directives_stay(self):
        self.assertEqual(changes('#include "a.h"\n// 1 < 2\n/* 3 */\n#define X \\\n  5\n'), [])

    def test_comparison_moves_its_bound_and_turns_round(self):
        self.assertEqual(changes(in_function("return a < b;"), "comparison"), [("<", "<="), ("<", ">")])
        self.assertEqual(changes(in_function("return a == b;"), "comparison"), [("==", "!=")])

    def test_brackets_of_templates_are_no_comparison(self):
        self.assertEqual(changes(in_function("std::vector<int> v;"), "comparison"), [])

    def test_arithmetic_is_changed_between_two_values_only(self):
        self.assertEqual(changes(in_function("return a + b * -a;"), "arithmetic"), [("+", "-"), ("*", "/")])
        self.assertEqual(changes(in_function("int* p = &a;"), "arithmetic"), [])
        self.assertEqual(changes(in_function("a += b; ++a;"), "arithmetic"), [("+=", "-="), ("++", "--")])
        self.assertEqual(changes(in_function("return std::max(a, b);"), "arithmetic"), [("max", "min")])

    def test_logic_swaps_and_loses_its_not(self):
        self.assertEqual(changes(in_function("return a && !b;"), "logic"), [("&&", "||"), ("!", "")])

    def test_condition_holds_always_or_never(self):
        self.assertEqual(changes(in_function("if (a) b = a;"), "condition"),
                         [("(a)", "((a) || true)"), ("(a)", "((a) && false)")])

    def test_condition_that_declares_stays(self):
        self.assertEqual(changes(in_function("if (int c = a) b = c;"), "condition"), [])

    def test_calls_and_assignments_are_left_out(self):
        self.assertEqual(changes(in_function("x::y(a)->z(b, f());"), "left out"), [("x::y(a)->z(b, f());", ";")])
        self.assertEqual(changes(in_function("a = b;"), "left out"), [("a = b;", ";")])
        self.assertEqual(changes(in_function("if (a) g(b);"), "left out"), [("g(b);", ";")])

    def test_declarations_and_returns_are_not_left_out(self):
        self.assertEqual(changes(in_function("std::lock_guard lock(m); int c = a; return g(c);"), "left out"), [])

    def test_a_change_knows_whether_a_function_holds_it(self):
        source = "const int T[] = {1};\nA::A() : m(2), n{3} {\n  g(4);\n}\nnamespace {\nint h() { return 5; }\n}\n"
        inside = {source[m.start:m.end]: m.inside for m in mutants_of(source) if m.kind == "constant"}
        self.assertEqual(inside, {"1": False, "2": False, "3": False, "4": True, "5": True})
        self.assertEqual({source[m.start:m.end]: m.line for m in mutants_of(source)}["4"], 3)

    def test_every_source_of_the_product_has_changes_that_fit_its_text(self):
        for path in [*ROOT.glob("src/*/*.cpp"), *ROOT.glob("vendelo-sdl2/*.cpp")]:
            text = path.read_text()
            for mutant in mutants_of(text):
                self.assertNotEqual(mutant.apply(text), text, path)
                self.assertEqual(text.count("\n", 0, mutant.start) + 1, mutant.line, path)


class Choice(unittest.TestCase):
    def listed(self, *options):
        return subprocess.run([str(ROOT / "script/mutate"), "--list", *options], capture_output=True, text=True,
                              check=True).stdout.splitlines()

    def test_the_seed_alone_decides(self):
        self.assertEqual(self.listed("--count", "40", "--seed", "a"), self.listed("--count", "40", "--seed", "a"))
        self.assertNotEqual(self.listed("--count", "40", "--seed", "a"), self.listed("--count", "40", "--seed", "b"))

    def test_files_narrow_the_choice(self):
        for line in self.listed("src/components/*", "--count", "30"):
            self.assertTrue(line.startswith("src/components/"), line)

    def test_a_line_comes_once_while_others_are_left(self):
        places = [":".join(line.split(":")[:2]) for line in self.listed("--count", "100", "--seed", "c")]
        self.assertEqual(len(set(places)), len(places))

    def test_a_file_that_is_none_is_refused(self):
        done = subprocess.run([str(ROOT / "script/mutate"), "--list", "nowhere.cpp"], capture_output=True, text=True)
        self.assertNotEqual(done.returncode, 0)
        self.assertIn("nowhere.cpp", done.stderr)


if __name__ == "__main__":
    unittest.main()
