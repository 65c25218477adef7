#!/usr/bin/env python3
"""Runs two commands in turn (A B, B A, A B, ...) and prints one line: the
label, each command's median CPU time (user + system, its children
included), their ratio, and the wall medians.

    interleaved.py LABEL COMMAND_A COMMAND_B

Each command is split like a shell would (no shell runs it) and its output
goes to /dev/null. RUNS (default 30) pairs are measured after WARMUP
(default 3). Alternating which goes first keeps a machine that slows down or
speeds up during the run from favouring either. COMMAND_A failing stops the
comparison with status 1; COMMAND_B's status is not looked at (`timew` says
"no active time tracking" with status 1).

A command may be a sequence of steps separated by a lone `;` (quoted for
the shell that runs this script): the steps run one after another, PAUSE
seconds apart (default 0), and their CPU times add up; every step of either
command must succeed. A pause lets a step depend on the clock having moved:
timewarrior keeps whole seconds and refuses to stop a timer in the second
it started ("The end of a date range must be after the start")."""

import os
import shlex
import statistics
import sys
import time


def run(argv, checked):
    null = os.open(os.devnull, os.O_WRONLY)
    try:
        start = time.perf_counter()
        pid = os.posix_spawnp(argv[0], argv, os.environ,
                              file_actions=[(os.POSIX_SPAWN_DUP2, null, 1), (os.POSIX_SPAWN_DUP2, null, 2)])
        _, status, usage = os.wait4(pid, 0)
        wall = time.perf_counter() - start
    finally:
        os.close(null)
    if checked and os.waitstatus_to_exitcode(status) != 0:
        sys.exit(f"{shlex.join(argv)} failed")
    return (usage.ru_utime + usage.ru_stime) * 1000, wall * 1000


def steps(command):
    """The argument lists of a command's steps."""
    result = [[]]
    for word in shlex.split(command):
        if word == ";":
            result.append([])
        else:
            result[-1].append(word)
    if any(not step for step in result):
        sys.exit(f"an empty step in: {command}")
    return result


def run_steps(sequence, checked, pause):
    cpu = wall = 0.0
    for number, argv in enumerate(sequence):
        if number > 0:
            time.sleep(pause)
        step_cpu, step_wall = run(argv, checked or len(sequence) > 1)
        cpu, wall = cpu + step_cpu, wall + step_wall
    return cpu, wall


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    label, first, second = sys.argv[1], steps(sys.argv[2]), steps(sys.argv[3])
    runs, warmup = int(os.environ.get("RUNS", "30")), int(os.environ.get("WARMUP", "3"))
    pause = float(os.environ.get("PAUSE", "0"))
    samples = ([], [])
    for index in range(warmup + runs):
        order = (0, 1) if index % 2 == 0 else (1, 0)
        for which in order:
            measured = run_steps((first, second)[which], which == 0, pause)
            if index >= warmup:
                samples[which].append(measured)
    cpu = [statistics.median(cpu for cpu, _ in taken) for taken in samples]
    wall = [statistics.median(wall for _, wall in taken) for taken in samples]
    print(f"{label:<34} {cpu[0]:8.1f} ms {cpu[1]:8.1f} ms {cpu[0] / cpu[1]:6.2f}x"
          f"   (wall medians {wall[0]:.1f} / {wall[1]:.1f} ms)")


if __name__ == "__main__":
    main()
