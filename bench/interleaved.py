#!/usr/bin/env python3
"""Measures pairs of commands as a shell runs them and prints a table.

    interleaved.py PAIRS

PAIRS is a file of lines `command | peer | COMMAND_A | COMMAND_B` (the first
two are the table's labels; blank lines and lines starting with # are
skipped). Each command is split like a shell would, its program resolved on
PATH once, and then started directly with posix_spawn (no shell in
between), its output going to /dev/null. Its CPU time is what
getrusage(RUSAGE_CHILDREN) gained while it ran (user + system, and any
program it waited for), its wall time from the spawn to the end of its wait.

The two commands of a pair run in turn, A B, then B A, and so on, so a
machine that slows down or speeds up during the run favours neither: RUNS
(default 30) pairs are measured after WARMUP (default 3). The table shows
each command's median CPU and wall time and the ratios, A over B.
COMMAND_A failing stops the run with status 1; COMMAND_B's status is not
looked at (`timew` says "There is no active time tracking" with status 1).
"""

import os
import resource
import shlex
import shutil
import statistics
import sys
import time


def resolved(command):
    argv = shlex.split(command)
    program = shutil.which(argv[0]) if argv else None
    if program is None:
        sys.exit(f"not found: {command}")
    return [program] + argv[1:]


def run(argv, checked):
    """The CPU and wall milliseconds of one run of `argv`."""
    null = os.open(os.devnull, os.O_WRONLY)
    try:
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        start = time.perf_counter()
        pid = os.posix_spawn(argv[0], argv, os.environ,
                             file_actions=[(os.POSIX_SPAWN_DUP2, null, 1), (os.POSIX_SPAWN_DUP2, null, 2)])
        _, status = os.waitpid(pid, 0)
        wall = time.perf_counter() - start
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
    finally:
        os.close(null)
    if checked and os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{shlex.join(argv)} failed")
    cpu = (after.ru_utime - before.ru_utime) + (after.ru_stime - before.ru_stime)
    return cpu * 1000, wall * 1000


def measure(first, second, runs, warmup):
    """Median CPU and wall milliseconds of each of two commands run in turn."""
    samples = ([], [])
    for index in range(warmup + runs):
        for which in ((0, 1) if index % 2 == 0 else (1, 0)):
            taken = run((first, second)[which], which == 0)
            if index >= warmup:
                samples[which].append(taken)
    cpu = tuple(statistics.median(cpu for cpu, _ in taken) for taken in samples)
    wall = tuple(statistics.median(wall for _, wall in taken) for taken in samples)
    return cpu, wall


def pairs(path):
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if not line.strip() or line.lstrip().startswith("#"):
                continue
            fields = [field.strip() for field in line.split(" | ")]
            if len(fields) != 4:
                sys.exit(f"not `command | peer | COMMAND_A | COMMAND_B`: {line.rstrip()}")
            yield fields[0], fields[1], resolved(fields[2]), resolved(fields[3])


def ratio(a, b):
    return f"{a / b:.2f}x" if b > 0 else "-"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    runs, warmup = int(os.environ.get("RUNS", "30")), int(os.environ.get("WARMUP", "3"))
    print("| command | vs timewarrior | CPU ms | CPU ratio | wall ms | wall ratio |")
    print("|---|---|---:|---:|---:|---:|")
    for label, peer, first, second in pairs(sys.argv[1]):
        cpu, wall = measure(first, second, runs, warmup)
        print(f"| {label} | {peer} | {cpu[0]:.1f} / {cpu[1]:.1f} | {ratio(*cpu)} "
              f"| {wall[0]:.1f} / {wall[1]:.1f} | {ratio(*wall)} |", flush=True)


if __name__ == "__main__":
    main()
