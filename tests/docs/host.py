#!/usr/bin/env python3
"""Run the example of a graphical host on a device tree, and look at what it has installed there.

Usage: host.py PROGRAM MAKE-DEVICE RESOURCES HELPER
"""

import pathlib
import subprocess
import sys
import tempfile

program, make_device, resources, helper = sys.argv[1:]
with tempfile.TemporaryDirectory() as folder:
    subprocess.run([make_device, folder + "/device"], check=True)
    subprocess.run([program, folder + "/device", resources, helper], check=True)
    codes = [file.read_text() for file in pathlib.Path(folder).glob("**/Installed Tweaks/com.example.notes/**/code.js")]
if not any("Hello from the host" in code for code in codes):
    sys.exit("the tweak of the host is not installed")
