#!/usr/bin/env python3
"""Run the examples of the page on JSON output, and compare what the command prints.

Usage: json_page.py PAGE TAVLEN MAKE-DEVICE
"""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

REST = "…"  # any text; as an element of an array, any number of further elements


def agrees(shown, printed):
    if shown == REST:
        return isinstance(printed, str)
    if isinstance(shown, dict) and isinstance(printed, dict):
        return list(shown) == list(printed) and all(agrees(shown[key], printed[key]) for key in shown)
    if isinstance(shown, list) and isinstance(printed, list):
        if REST not in shown or len(shown) == len(printed) == 1:
            return len(shown) == len(printed) and all(map(agrees, shown, printed))
        elements = [each for each in shown if each != REST]
        return len(elements) < len(printed) and all(any(agrees(each, one) for one in printed) for each in elements)
    return type(shown) is type(printed) and shown == printed


def steps(page):
    """The commands in their order, each with the value after it, which commands in a row share."""
    for block in re.findall(r"^```console\n(.*?)^```$", page, re.M | re.S):
        waiting = []
        for commands, value in re.findall(r"((?:^\$ .*\n)+)((?:^[^$].*\n)*)", block, re.M):
            waiting = [line[2:] for line in commands.splitlines()]
            for command in waiting:
                yield command, value if "--json" in command else ""


def commands_with_json(tavlen):
    """The words of each command that has the option."""
    manual = subprocess.run([tavlen, "help", "--man"], check=True, capture_output=True, text=True).stdout
    for section in manual.split('\n.SS "')[1:]:
        if '\n.B "\\-\\-json"' in section:
            yield re.match(r"tavlen [a-z-]+(?: [a-z]+)?", section.replace("\\-", "-")).group()


def main(page_file, tavlen, make_device):
    page = pathlib.Path(page_file).read_text(encoding="utf-8")
    faults = [f"{words}: is missing" for words in commands_with_json(tavlen) if words not in page]
    with tempfile.TemporaryDirectory() as folder:
        device = os.path.join(folder, "device")
        subprocess.run([make_device, device], check=True)
        environment = dict(os.environ, TAVLEN_ROOT=device, PATH=os.path.dirname(tavlen) + ":/usr/bin:/bin")
        for command, value in steps(page):
            ran = subprocess.run(["sh", "-c", command], cwd=folder, env=environment, capture_output=True, text=True,
                                 stdin=subprocess.DEVNULL)
            if ran.returncode != 0:
                faults.append(f"{command}: {ran.stderr}")
            elif value and not agrees(json.loads(value), json.loads(ran.stdout)):
                faults.append(f"{command}: prints {ran.stdout}")
    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main(*sys.argv[1:])
