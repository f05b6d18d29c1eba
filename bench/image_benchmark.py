"""Reading the classes of Mach-O images: the library and the command, compared with LLVM's object dumper.

scripts/bench calls summarise(). By itself: image_benchmark.py IMAGEDUMP TAVLEN, the programs to measure.
"""
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile

CLASSES = 5000
CODE = 2400  # bytes a class: what twenty short methods take
RUNS = 11


def output_of(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, check=True, text=True).stdout


def measure(*command):
    """The processor time of a process in milliseconds, and its highest memory in bytes."""
    child = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    child.returncode = os.waitstatus_to_exitcode(status)
    if child.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))}: exit status {child.returncode}")
    return (usage.ru_utime + usage.ru_stime) * 1000, usage.ru_maxrss * 1024


def median(values):
    return statistics.median(values)


def times(dump, tavlen, image):
    """Medians of the times of the walk, of the records, of the command and of its peer, and the command's memory. They take
    turns, so that a slow moment of the machine affects all of them."""
    rows = []
    for _ in range(RUNS):
        command = measure(tavlen, "classes", image, "--parser", "static", "--json")
        rows.append((
            float(output_of(dump, "walk", image).split()[1]),
            float(output_of(dump, "records", image).split()[1]),
            command[0],
            measure("llvm-objdump-14", "--macho", "--objc-meta-data", image)[0],
            command[1],
        ))
    return tuple(median(column) for column in zip(*rows))


def line(title, value, target, detail=""):
    print(f"{title:<56}{value:8.2f}   (target {target}{detail})", flush=True)


def summarise(dump, tavlen):
    with tempfile.TemporaryDirectory() as folder:
        small, large, sparse, bare = (f"{folder}/{name}" for name in ("small", "large", "sparse", "bare"))
        output_of(dump, "write", small, str(CLASSES), str(CODE * CLASSES))
        output_of(dump, "write", large, str(10 * CLASSES), str(CODE * 10 * CLASSES))
        output_of(dump, "write", bare, "10", "0")
        output_of(dump, "write", sparse, "10", str(50 << 20))
        methods = int(output_of(dump, "walk", small).split()[0])
        size = os.path.getsize(small)
        print(f"\nMach-O image of {CLASSES:,} classes and {methods:,} methods, {size / 1e6:.1f} MB (medians of {RUNS}, "
              "processor time)")
        walk, records, command, peer, memory = times(dump, tavlen, small)
        for title, value, target in [("the walk alone", walk, 10), ("into records", records, 6),
                                     ("the command with --json", command, 4)]:
            line(f"{title}, times as fast as llvm-objdump", peer / value, f">= {target}", f"; {value:.1f} ms of {peer:.1f}")
        line("the command's memory at its peak, over the image", memory / size, "< 2", f"; {memory / 1e6:.1f} MB")
        start = median(measure(tavlen, "--version")[0] for _ in range(RUNS))
        print(f"{'of which the command takes to start':<56}{start:8.1f} ms")
        more = times(dump, tavlen, large)
        for title, value, base in [("the walk", more[0], walk), ("into records", more[1], records),
                                   ("the command", more[2], command)]:
            line(f"{title}: {10 * CLASSES:,} classes over ten times {CLASSES:,}", value / base / 10, "<= 1.2", f"; {value:.1f} ms")
        few = [(measure(tavlen, "classes", sparse, "--parser", "static", "--json"),
                measure(tavlen, "classes", bare, "--parser", "static", "--json")) for _ in range(RUNS)]
        extra = median(a[1] - b[1] for a, b in few)
        time = median(a[0] - b[0] for a, b in few)
        line("ten classes: memory for 50 MB of code, in MB", extra / 1e6, "<= 1", f"; {time:.1f} ms of time")


if __name__ == "__main__":
    summarise(*(pathlib.Path(each).resolve() for each in sys.argv[1:3]))
