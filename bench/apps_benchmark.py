"""Listing 2,000 apps: the command, compared with a Python script that reads the same files with plistlib.

scripts/bench calls summarise(). Run as a program with a device tree as its argument, this file is that script.
"""
import pathlib
import plistlib
import random
import statistics
import subprocess
import sys
import tempfile
import time

APPS = 2000
RUNS = 11
FOLDER = "var/containers/Bundle/Application"


def info_of(number, chance):
    """A typical Info.plist, without the texts that make up its size."""
    orientations = ["UIInterfaceOrientationPortrait", "UIInterfaceOrientationLandscapeLeft",
                    "UIInterfaceOrientationLandscapeRight"]
    info = {
        "CFBundleDevelopmentRegion": "en",
        "CFBundleExecutable": f"App{number}",
        "CFBundleIdentifier": f"com.example.app{number}",
        "CFBundleInfoDictionaryVersion": "6.0",
        "CFBundleName": f"App {number}",
        "CFBundlePackageType": "APPL",
        "CFBundleShortVersionString": f"{number % 9}.{number % 10}",
        "CFBundleVersion": str(number),
        "CFBundleSupportedPlatforms": ["iPhoneOS"],
        "CFBundleIcons": {"CFBundlePrimaryIcon": {"CFBundleIconFiles": ["AppIcon60x60", "AppIcon76x76"],
                                                  "UIPrerenderedIcon": False}},
        "CFBundleURLTypes": [{"CFBundleTypeRole": "Editor", "CFBundleURLSchemes": [f"app{number}"]}],
        "LSRequiresIPhoneOS": True,
        "MinimumOSVersion": "13.0",
        "UIDeviceFamily": [1, 2],
        "UIRequiredDeviceCapabilities": ["arm64"],
        "UISupportedInterfaceOrientations": orientations[:1 + number % 3],
        "UISupportedInterfaceOrientations~ipad": orientations,
    }
    if chance.random() < 0.5:
        info["CFBundleDisplayName"] = f"Application {number}"
    return info


def bytes_of(number, chance):
    """An Info.plist of 2 to 4 kB, most of it permission texts. Every second one is binary."""
    form = plistlib.FMT_BINARY if number % 2 else plistlib.FMT_XML
    info = info_of(number, chance)
    wanted = chance.randrange(2048, 3900)
    while len(data := plistlib.dumps(info, fmt=form)) < wanted:
        info[f"NS{chance.randrange(10**9)}UsageDescription"] = "This lets you share what you see. " * chance.randrange(1, 4)
    return data


def make_tree(tree):
    chance = random.Random(1)
    for number in range(APPS):
        app = tree / FOLDER / f"{number:08X}-0000-4000-8000-{chance.getrandbits(48):012X}" / f"App{number}.app"
        app.mkdir(parents=True)
        (app / "Info.plist").write_bytes(bytes_of(number, chance))


def milliseconds(command):
    begin = time.perf_counter()
    subprocess.run(command, stdout=subprocess.DEVNULL, check=True)
    return (time.perf_counter() - begin) * 1000


def output_of(command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True).stdout


def summarise(tavlen):
    with tempfile.TemporaryDirectory() as folder:
        make_tree(pathlib.Path(folder))
        ours = [tavlen, "--root", folder, "apps"]
        peer = [sys.executable, __file__, folder]
        # Check that both list every app. These runs also warm the cache.
        listed = set(output_of(ours).split())
        missing = [line for line in output_of(peer).splitlines() if line.split("\t")[0] not in listed]
        if missing:
            sys.exit(f"tavlen apps lists {APPS - len(missing)} of {APPS} apps")
        times = [(milliseconds(ours), milliseconds(peer)) for _ in range(RUNS)]
    medians = [statistics.median(each) for each in zip(*times)]
    print(f"\nListing {APPS} apps (medians of {RUNS} runs)")
    print(f"{'tavlen apps':<32}{medians[0]:8.1f} ms")
    print(f"{'plistlib':<32}{medians[1]:8.1f} ms")
    print(f"{'tavlen, over plistlib':<56}{medians[0] / medians[1]:8.2f}   (target < 0.4)", flush=True)


def list_apps(tree):
    """Prints the same list as the command."""
    for file in sorted(pathlib.Path(tree, FOLDER).glob("*/*.app/Info.plist")):
        with file.open("rb") as stream:
            info = plistlib.load(stream)
        print(info["CFBundleIdentifier"], info.get("CFBundleDisplayName", info["CFBundleName"]), sep="\t")


if __name__ == "__main__":
    list_apps(sys.argv[1])
