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
SMALL_FILE_BYTES = 1_000_000  # deflated as a whole
RUNS = 5


def make_tree(folder, files, size):
    chance = random.Random(1)
    words = ["".join(chance.choices("etaoinshrdlu", k=chance.randrange(2, 10))) for _ in range(5000)]
    folder.mkdir()
    for number in range(files):
        if number % 2:
            data = chance.randbytes(size)
        else:
            data = " ".join(chance.choices(words, k=size // 6)).encode()[:size]
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


def runs_of(program, files, count, size=FILE_BYTES):
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        tree = folder / "tree"
        make_tree(tree, files, size)
        return [round_trip(program, folder, tree) for _ in range(count)]


def peak(runs, row):
    """The highest peak of memory of a row, in MB."""
    return max(int(run[row][1]) for run in runs) / 1024


def summarise_files(program, size, targets):
    _, *runs = runs_of(program, FILES * FILE_BYTES // size, RUNS + 1, size)  # the first warms the cache
    few = runs_of(program, FILES * FILE_BYTES // size // 10, 1, size)
    seconds = {row: statistics.median(run[row][0] for run in runs) for row in runs[0]}
    print(f"\nArchives of {FILES * FILE_BYTES / 1e6:.0f} MB, files of {size / 1e6:.1f} MB (medians of {RUNS} runs)")
    for row, value in seconds.items():
        print(f"{row:<32}{value:8.2f} s")
    for row, peer in [("export", "cp -a, zip -1"), ("import", "unzip")]:
        print(f"{f'{row}, over {peer}':<56}{seconds[row] / seconds[peer]:8.2f}   (target <= {targets[row]})")
        print(f"{f'{row}, peak of memory; with a tenth of the files':<56}{peak(runs, row):8.1f} MB; {peak(few, row):.1f} MB",
              flush=True)


def summarise(program):
    summarise_files(program, FILE_BYTES, {"export": 0.5, "import": 1.0})
    summarise_files(program, SMALL_FILE_BYTES, {"export": 0.35, "import": 1.0})


if __name__ == "__main__":
    summarise(pathlib.Path(sys.argv[1]).resolve())
