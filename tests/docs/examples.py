#!/usr/bin/env python3
"""Run the sessions of a page on a new example device, and compare what the commands print.

Usage: examples.py PAGE TAVLEN MAKE-DEVICE [--every-json]

A session is a block of the language "console", whose commands go on after "> ". Where commands with --json stand in a row, all print the value after
them. With --every-json, the page must also name every command that has that option.
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


def is_as_shown(command, shown, printed):
    if not shown:
        return True
    if "--json" in command:
        return agrees(json.loads(shown), json.loads(printed))
    pattern = ".*".join(map(re.escape, shown.rstrip("\n").split(REST)))
    return re.fullmatch(pattern, printed.rstrip("\n")) is not None


def steps(page):
    """The commands in their order, each with the output that is shown for it."""
    for block in re.findall(r"^```console\n(.*?)^```$", page, re.M | re.S):
        for row, shown in re.findall(r"((?:^[$>] .*\n)+)((?:^(?!\$ ).*\n)*)", block, re.M):
            commands = row[2:].replace("\n> ", "\n").split("\n$ ")
            for command in commands:
                yield command, shown if "--json" in command or len(commands) == 1 else ""


def commands_with_json(tavlen):
    """The words of each command that has the option."""
    manual = subprocess.run([tavlen, "help", "--man"], check=True, capture_output=True, text=True).stdout
    for section in manual.split('\n.SS "')[1:]:
        if '\n.B "\\-\\-json"' in section:
            yield re.match(r"tavlen [a-z-]+(?: [a-z]+)?", section.replace("\\-", "-")).group()


def main(page_file, tavlen, make_device, *options):
    page = pathlib.Path(page_file).read_text(encoding="utf-8")
    faults = []
    if "--every-json" in options:
        faults += [f"{words}: is missing" for words in commands_with_json(tavlen) if words not in page]
    with tempfile.TemporaryDirectory() as folder:
        device = os.path.join(folder, "device")
        subprocess.run([make_device, device], check=True)
        environment = dict(os.environ, TAVLEN_ROOT=device, PATH=os.path.dirname(tavlen) + ":/usr/bin:/bin")
        for command, shown in steps(page):
            ran = subprocess.run(["sh", "-c", command], cwd=folder, env=environment, capture_output=True, text=True,
                                 stdin=subprocess.DEVNULL)
            if ran.returncode != 0:
                faults.append(f"{command}: {ran.stderr}")
            elif not is_as_shown(command, shown, ran.stdout):
                faults.append(f"{command}: prints {ran.stdout}")
    sys.exit("\n".join(faults) or 0)


if __name__ == "__main__":
    main(*sys.argv[1:])
