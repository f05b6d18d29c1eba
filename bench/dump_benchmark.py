"""The dump of GNUstep's Foundation: the library, compared with a C program that copies the same texts.

scripts/bench calls summarise(). By itself: dump_benchmark.py CLASSDUMP CLASSDUMPPEER, the programs to measure.
"""
import pathlib
import statistics
import subprocess
import sys
import time

IMAGE = "libgnustep-base.so.1.28"
RUNS = 11


def run(program):
    """Returns the wall-clock time in milliseconds, and the output."""
    begin = time.perf_counter()
    output = subprocess.run([program, IMAGE], stdout=subprocess.PIPE, check=True, text=True).stdout
    return (time.perf_counter() - begin) * 1000, output


def summarise(program, peer):
    amounts = [run(each)[1] for each in (program, peer)]  # these runs also warm the cache
    if amounts[0] != amounts[1]:
        sys.exit(f"the dump holds {amounts[0].strip()}, its peer's {amounts[1].strip()}")
    classes, methods, _ = amounts[0].split()
    times = [(run(program)[0], run(peer)[0]) for _ in range(RUNS)]
    ours, theirs = (statistics.median(each) for each in zip(*times))
    print(f"\nDump of {classes} classes and {methods} methods of the run time (medians of {RUNS} processes)")
    print(f"{'run-time parser':<32}{ours:8.1f} ms")
    print(f"{'C':<32}{theirs:8.1f} ms")
    print(f"{'run-time parser, over C':<56}{ours / theirs:8.2f}   (target <= 1.5)", flush=True)


if __name__ == "__main__":
    summarise(*(pathlib.Path(each).resolve() for each in sys.argv[1:3]))
