"""What .clang-format cannot say of the sources: how a comment begins, that a body of one line has no
braces, and that a constant of a namespace or a class is written kLikeThis."""
import re
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

HEAD = re.compile(r"\s*(\} else )?(if|for|while) \(.*\) \{$|\s*\} else \{$")
CONSTANT = re.compile(r"(?:(?:inline |static )*constexpr\b|\s+(?:inline )?static constexpr\b)((?:<[^>]*>|[^(={;,<])*?)(\w+)(?:\[[^]]*\])*\s*(?:=|\{|;|,)")
# Names that the framework's users and the skins' makers know already.
KNOWN = set("""Critical Error Warning Important Info Normal Debug Verbose VeryVerbose
    NUM_BASE_METHODS TOP_PRIORITY base64_chars LimitSeparator PARAM_MASK_ALL PARAM_MASK_NO_CACHE DataLength
    sumSize levelFrameHeight winAnimationPhaseDuration sizeAmplitude""".split())
COMMENT = re.compile(r"(^|\s)///")


def faults(text):
    """The lines, counted from 1, that are written otherwise."""
    lines = text.splitlines()
    found = [n for n, line in enumerate(lines, 1) if COMMENT.search(line)]
    for n, line in enumerate(lines, 1):
        constant = CONSTANT.match(line)
        if constant and not re.match(r"k[A-Z]", constant[2]) and constant[2] not in KNOWN:
            found.append(n)
    for n in range(len(lines) - 2):
        body, end = lines[n + 1], lines[n + 2].strip()
        if HEAD.match(lines[n]) and body.endswith(";") and end == "}" and "//" not in lines[n]:
            # A chain has braces where one of its bodies needs them.
            # The checks of the test framework are an if of their own, which an else would go to.
            if not lines[n].strip().startswith("}") and not re.search(r"\b(EXPECT|ASSERT)_\w+\(|^\s*if \(", body):
                found.append(n + 1)
    return sorted(found)


class TheRule(unittest.TestCase):
    def test_braces_around_one_line_are_told(self):
        self.assertEqual(faults("if (a) {\n  b();\n}\n"), [1])
        self.assertEqual(faults("  for (int i = 0; i < n; ++i) {\n    b(i);\n  }\n"), [1])
        self.assertEqual(faults("while (a)\n  b();\n"), [])
        self.assertEqual(faults("if (a) {\n  b();\n  c();\n}\n"), [])
        self.assertEqual(faults("if (a) {\n  b();\n} else {\n  c();\n  d();\n}\n"), [])

    def test_comments_begin_with_two_strokes(self):
        self.assertEqual(faults("/// x\nint a;  ///< y\n// z\n\"http:///\"\n"), [1, 2])

    def test_constants_have_one_spelling(self):
        self.assertEqual(faults("constexpr int kMost = 3;\n  static constexpr long kLeast{1};\n"), [])
        self.assertEqual(faults("constexpr int MOST = 3;\n  static constexpr long least{1};\n"), [1, 2])
        self.assertEqual(faults("constexpr std::array<int, 2> kBoth{1, 2}, kNone;\nconstexpr int f(int a) { return a; }\n"), [])
        self.assertEqual(faults("constexpr int sumSize = 844;\n"), [], "a name that is known already")


class TheSources(unittest.TestCase):
    def test_are_written_alike(self):
        listed = subprocess.run(["git", "ls-files", "--cached", "--others", "--exclude-standard", "*.h", "*.cpp"],
                                cwd=ROOT, capture_output=True, text=True, check=True).stdout.split()
        told = []
        for name in listed:
            if (ROOT / name).exists():
                told += [f"{name}:{line}" for line in faults((ROOT / name).read_text())]
        self.assertGreater(len(listed), 400)
        self.assertEqual(told, [])


if __name__ == "__main__":
    unittest.main()
