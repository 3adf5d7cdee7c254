"""The program's file is built as a distribution builds its own: hardening_test.py READELF PROGRAM"""

import re
import subprocess
import sys


def read(readelf, program, option):
    return subprocess.run(
        [readelf, "-W", option, program], check=True, capture_output=True, text=True, env={"LC_ALL": "C"}
    ).stdout


def main(readelf, program):
    header, segments, dynamic, symbols = (read(readelf, program, option) for option in ("-h", "-l", "-d", "--dyn-syms"))
    # Name, and the flags of each segment: R, W and E in columns of their own.
    loaded = re.findall(r"^  (\S+) +0x\S+ 0x\S+ 0x\S+ 0x\S+ 0x\S+ ([R ][W ][E ])", segments, re.M)
    imported = set(re.findall(r" UND (\w+)", symbols))
    checked = {name for name in imported if re.fullmatch(r"__\w+_chk", name)}

    faults = []

    def expect(holds, fault):
        if not holds:
            faults.append(fault)

    expect(re.search(r"Type: +DYN", header) and re.search(r"FLAGS_1.*\bPIE\b", dynamic), "stands at a fixed address")
    expect(any(name == "GNU_RELRO" for name, _ in loaded), "has no part that is read-only once it is loaded")
    expect(re.search(r"FLAGS.*\bBIND_NOW\b|FLAGS_1.*\bNOW\b", dynamic), "looks its functions up while it runs")
    expect(("GNU_STACK", "RW ") in loaded, "has a stack that can be executed")
    expect(len(loaded) > 4 and not [flags for _, flags in loaded if "W" in flags and "E" in flags],
           "has memory that can be both written and executed")
    expect("TEXTREL" not in dynamic, "changes its code while it is loaded")
    expect(not re.search(r"\((RPATH|RUNPATH)\)", dynamic), "looks for libraries in places of its own")
    expect("__stack_chk_fail" in imported, "does not watch its stack")
    expect(len(checked) > 3, "calls no checked functions of the library")
    for name in ("printf", "snprintf", "fprintf"):
        expect(name not in imported, f"calls {name} unchecked")

    for fault in faults:
        print(f"{program} {fault}")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:3]))
