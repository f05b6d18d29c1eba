"""Export and import of 500 MB, half noise and half text: the library, compared with cp, zip and unzip.

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
    """Returns the wall-clock time of all commands in seconds, and the output of the last one."""
    os.sync()  # so that earlier writes do not count
    begin = time.perf_counter()
    for command, folder in commands:
        output = subprocess.run(command, cwd=folder, stdout=subprocess.PIPE, check=True, text=True).stdout
    return time.perf_counter() - begin, output


def remove(*paths):
    for path in paths:
        shutil.rmtree(path) if path.is_dir() else path.unlink()


def round_trip(program, folder, tree):
    """Returns the results of measured() by name. Both imports read the same archive."""
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


def runs_of(program, files, count):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        tree = folder / "tree"
        make_tree(tree, files)
        return [round_trip(program, folder, tree) for _ in range(count)]


def peak(runs, row):
    """The highest peak of memory of a row, in MB."""
    return max(int(run[row][1]) for run in runs) / 1024


def summarise(program):
    _, *runs = runs_of(program, FILES, RUNS + 1)  # the first warms the cache
    small = runs_of(program, FILES // 10, 1)
    seconds = {row: statistics.median(run[row][0] for run in runs) for row in runs[0]}
    print(f"\nArchives of {FILES * FILE_BYTES / 1e6:.0f} MB (medians of {RUNS} runs)")
    for row, value in seconds.items():
        print(f"{row:<32}{value:8.2f} s")
    for row, peer, target in [("export", "cp -a, zip -1", 1.2), ("import", "unzip", 1.0)]:
        print(f"{f'{row}, over {peer}':<56}{seconds[row] / seconds[peer]:8.2f}   (target <= {target})")
        print(f"{f'{row}, peak of memory; with a tenth of the files':<56}{peak(runs, row):8.1f} MB; {peak(small, row):.1f} MB",
              flush=True)


if __name__ == "__main__":
    summarise(pathlib.Path(sys.argv[1]).resolve())
