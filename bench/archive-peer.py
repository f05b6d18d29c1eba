"""Reads the property list argv[1] and writes it again, argv[2] times each. Prints the median CPU
times of reading and of writing in milliseconds, one per line."""
import plistlib
import statistics
import sys
import time


def median(runs, body):
    times = []
    for _ in range(runs):
        begin = time.process_time()
        result = body()
        times.append((time.process_time() - begin) * 1000)
        del result
    return statistics.median(times)


with open(sys.argv[1], "rb") as file:
    data = file.read()
runs = int(sys.argv[2])
print(median(runs, lambda: plistlib.loads(data)))
value = plistlib.loads(data)
print(median(runs, lambda: plistlib.dumps(value, fmt=plistlib.FMT_BINARY, sort_keys=False)))
