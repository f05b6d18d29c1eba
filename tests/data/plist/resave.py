"""Reads the property list argv[1] and saves it as argv[2] in the form argv[3]."""
import plistlib
import sys

source, target, form = sys.argv[1:]
with open(source, "rb") as file:
    value = plistlib.load(file)
with open(target, "wb") as file:
    plistlib.dump(value, file, fmt=plistlib.FMT_XML if form == "xml" else plistlib.FMT_BINARY, sort_keys=False)
