#!/usr/bin/env python3
"""Make the program of the tour of the library, or run it and compare its output with the page.

Usage: tour.py extract PAGE OUTPUT
       tour.py run PAGE PROGRAM MAKE-DEVICE BUILD
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile


def blocks(page, language):
    text = pathlib.Path(page).read_text(encoding="utf-8")
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.M | re.S)


def extract(page, output):
    includes, *steps = blocks(page, "cpp")
    program = f"{includes}\nint main() {{\n{''.join(steps)}}}\n"
    pathlib.Path(output).write_text(program, encoding="utf-8")


def run(page, program, make_device, build):
    with tempfile.TemporaryDirectory() as folder:
        os.mkdir(os.path.join(folder, "build"))
        os.symlink(build, os.path.join(folder, "build/release"))
        subprocess.run([make_device, os.path.join(folder, "build/device")], check=True)
        printed = subprocess.run([program], cwd=folder, check=True, stdout=subprocess.PIPE, text=True).stdout
    if printed != "".join(blocks(page, "text")):
        sys.exit(f"the program prints:\n{printed}")


if __name__ == "__main__":
    {"extract": extract, "run": run}[sys.argv[1]](*sys.argv[2:])
