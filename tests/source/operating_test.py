"""What docs/OPERATING.md says of the figures is so: each is in its table, and the alert rules fire when they should."""
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGE = (ROOT / "docs/OPERATING.md").read_text()
METRICS = (ROOT / "src/vesperatopscreen/TopScreenMetrics.cpp").read_text()


def figures():
    return set(re.findall(r'out\.(?:one|begin)\(\s*"(\w+)"', METRICS))


def rules():
    block = re.search(r"^    groups:\n(?:    .*\n|\n)+", PAGE, re.M).group(0)
    return "".join(line[4:] or "\n" for line in block.splitlines(keepends=True))


def alert(name, labels):
    return f"      - eval_time: 10m\n        alertname: {name}\n        exp_alerts: [{labels}]\n"


# The figures of a quarter of an hour, minute by minute, and which alerts stand at its tenth minute.
WELL = {
    'node_textfile_mtime_seconds{file="/x/topscreen.prom"}': "0+60x15",
    "topscreen_uptime_seconds": "0+60x15",
    "topscreen_frames_total": "0+3600x15",
    "topscreen_last_good_answer_age_seconds": "0.2x15",
    "topscreen_registered": "1x15",
    "topscreen_missing_files": "0x15",
    'topscreen_log_lines_lost_total{reason="file"}': "0x15",
    'topscreen_log_lines_lost_total{reason="limit"}': "0+5x15",
}
FILE = '{exp_labels: {file: "/x/topscreen.prom"}}'
CASES = [
    ("well", {}, {}),
    ("the program is gone and its file stays", {'node_textfile_mtime_seconds{file="/x/topscreen.prom"}': "0x15"},
     {"TopScreenGone": FILE}),
    ("there was never a file", dict.fromkeys(WELL), {"TopScreenGone": "{exp_labels: {}}"}),
    ("no frames", {"topscreen_frames_total": "7x15"}, {"TopScreenFrozen": "{exp_labels: {}}"}),
    ("the service is silent", {"topscreen_last_good_answer_age_seconds": "0+60x15"},
     {"TopScreenServiceSilent": "{exp_labels: {}}"}),
    ("no registration", {"topscreen_registered": "0x15"}, {"TopScreenServiceSilent": "{exp_labels: {}}"}),
    ("a picture is missing", {"topscreen_missing_files": "1x15"}, {"TopScreenSkinIncomplete": "{exp_labels: {}}"}),
    ("the disk is full", {'topscreen_log_lines_lost_total{reason="file"}': "0+5x15"},
     {"TopScreenLogIncomplete": '{exp_labels: {reason: "file"}}'}),
]


class Operating(unittest.TestCase):
    def test_table_names_every_figure(self):
        table = "\n".join(line for line in PAGE.splitlines() if line.startswith("| `"))
        named = set(re.findall(r"`(\w+)(?:\{[\w,]+\})?`", table))
        self.assertGreater(len(figures()), 10)
        self.assertEqual(figures() - named, set())

    def test_rules_are_of_figures_that_there_are(self):
        used = set(re.findall(r"topscreen_(\w+)", rules()))
        self.assertGreater(len(used), 4)
        self.assertEqual(used - figures(), set())

    def test_rules_fire_when_they_should(self):
        names = re.findall(r"- alert: (\w+)", rules())
        self.assertEqual({name for _, _, fired in CASES for name in fired}, set(names), "a rule without a case")
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "rules.yml").write_text(rules())
            text = "rule_files: [rules.yml]\ntests:\n"
            for name, other, fired in CASES:
                text += f"  - interval: 1m\n    name: {name}\n    input_series:\n"
                for series, values in {**WELL, **other}.items():
                    if values:
                        text += f"      - {{series: '{series}', values: '{values}'}}\n"
                text += "    alert_rule_test:\n" + "".join(alert(rule, fired.get(rule, "")) for rule in names)
            Path(folder, "test.yml").write_text(text)
            done = subprocess.run(["promtool", "test", "rules", "test.yml"], cwd=folder, capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)


if __name__ == "__main__":
    unittest.main()
