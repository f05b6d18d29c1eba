"""Export and import of 500 MB, half noise and half text: the library beside cp, zip and unzip.

scripts/bench calls summarise(). By itself: zip_benchmark.py FOLDERARCHIVE, the program to measure.
"""
import os
import pathlib
import random
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

FILES = 40
FILE_BYTES = 12_500_000
RUNS = 5


def make_tree(folder, files=FILES):
    chance = random.Random(1)
    words = ["".join(chance.choices("etaoinshrdlu", k=chance.randrange(2, 10))) for _ in range(5000)]
    folder.mkdir()
    for number in range(files):
        if number % 2:
            data = chance.randbytes(FILE_BYTES)
        else:
            data = " ".join(chance.choices(words, k=FILE_BYTES // 6)).encode()[:FILE_BYTES]
        (folder / f"file{number}").write_bytes(data)


def measured(*commands):
    """Seconds by the clock of all commands, and the largest peak of memory in MB."""
    os.sync()  # nobody is to pay for what another has written
    begin, peak = time.perf_counter(), 0
    for command, folder in commands:
        child = subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL)
        _, status, usage = os.wait4(child.pid, 0)
        child.returncode = os.waitstatus_to_exitcode(status)
        if child.returncode != 0:
            sys.exit(f"{command[0]}: exit status {child.returncode}")
        peak = max(peak, usage.ru_maxrss / 1024)
    return time.perf_counter() - begin, peak


def remove(*paths):
    for path in paths:
        shutil.rmtree(path) if path.is_dir() else path.unlink()


def round_trip(program, folder, tree):
    """One run of each, by name. Both imports read the same archive."""
    ours, theirs, copy, out = (folder / name for name in ("ours.zip", "theirs.zip", "Payload", "out"))
    times = {"export": measured(([program, "zip", tree, copy, ours], folder))}
    remove(copy)
    times["cp -a, zip -1"] = measured((["cp", "-a", tree, copy], folder), (["zip", "-1", "-r", "-q", theirs, "Payload"], folder))
    remove(copy)
    times["import"] = measured(([program, "unzip", theirs, out], folder))
    remove(out)
    times["unzip"] = measured((["unzip", "-q", theirs, "-d", out], folder))
    remove(out, ours, theirs)
    return times


def medians(program, files):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        tree = folder / "tree"
        make_tree(tree, files)
        round_trip(program, folder, tree)  # warms the cache
        runs = [round_trip(program, folder, tree) for _ in range(RUNS if files == FILES else 1)]
    return {row: [statistics.median(each) for each in zip(*(run[row] for run in runs))] for row in runs[0]}


def summarise(program):
    rows, small = medians(program, FILES), medians(program, FILES // 10)
    print(f"\nArchives of {FILES * FILE_BYTES / 1e6:.0f} MB (medians of {RUNS} runs)")
    for name, (seconds, peak) in rows.items():
        print(f"{name:<32}{seconds:8.2f} s, peak {peak:5.1f} MB; with a tenth of the files {small[name][1]:5.1f} MB")
    for title, ours, theirs, target in [("export, over cp -a and zip -1", "export", "cp -a, zip -1", 1.2),
                                        ("import, over unzip", "import", "unzip", 1.0)]:
        print(f"{title:<56}{rows[ours][0] / rows[theirs][0]:8.2f}   (target <= {target})", flush=True)


if __name__ == "__main__":
    summarise(sys.argv[1])
