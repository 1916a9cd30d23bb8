# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""What a run of the program costs, side by side with other ways to run the same commands.

usage: bench/compare [-r ROUNDS] [--save] [SUBJECT...]

Installs what it needs, builds the program, and prints a table for each subject:
  start      the start of the program, up to its first command
  nothing    72 commands that end at once
  sleep      72 commands that sleep for up to two seconds
  logs       2,000 and 5,000 logs of 4 KB, each read by a shell of its own
  bytes      1 GiB from one command, and from 72 together
  functions  what is done to every byte of a report

The commands are harmless: no packet is sent. All that is compared is run in turn, ROUNDS times (5 by default), so that
a machine that slows down does so for all; what takes longer than 20 s is run once. A cell shows the median, and the
least in parentheses; a ratio is that of two medians. With --save the tables of each subject are also written into
docs/results/SUBJECT.md.
"""

import argparse
import json
import pathlib
import subprocess
import sys
import tempfile

import result_pages
from measuring import PACKAGES, compare, printed, save, say, table
from project import ROOT

BUILD = ROOT / "build/release"
BENCH = pathlib.Path(__file__).resolve().parent
MEBIBYTE = 1 << 20
COMMANDS = 72


def ninja_file(lines):
    """The same command lines as edges that depend on nothing."""
    text = "rule line\n command = $line\n"
    for number, line in enumerate(lines):
        text += f"build output{number}: line\n line = {line.replace('$', '$$')}\n"
    return text


def ways_to_run(folder, name, lines, program=None):
    """All ways to run the shell command `lines` at once and see what they print."""
    commands = folder / f"{name}.lines"
    commands.write_text("".join(line + "\n" for line in lines))
    ninja = folder / f"{name}.ninja"
    ninja.write_text(ninja_file(lines))
    return {
        "halvik-diagnostic -s -c": ([BUILD / "bench_diagnostic", "-s", "-c"],
                                    program or {"BENCH_COMMANDS": str(commands)}),
        "ninja -j0 -k0": (["ninja", "-C", folder, "-f", ninja, "-j0", "-k0"], {}),
        "xargs -P0": (["xargs", "-P0", "-d", "\\n", "-n1", "-a", commands, "/bin/sh", "-c"], {}),
        "parallel -k -j0": (["parallel", "--will-cite", "-k", "-j0", "-a", commands], {"PARALLEL_SHELL": "/bin/sh"}),
        "Python asyncio": ([BENCH / "asyncio_runner", commands], {}),
        "posix_spawn to /dev/null": ([BUILD / "bench_spawn_minimum", commands], {}),
    }


OURS = "halvik-diagnostic -s -c"
MINIMUM = "posix_spawn to /dev/null"


def run_rows(results):
    ours = results[OURS].median()
    return [(name, runs.cell(), f"{ours / runs.median():.2f}") for name, runs in results.items()]


def start(folder, rounds):
    times = rounds * 20
    empty = "an empty program with the same libraries"
    ways = {
        empty: ([BUILD / "bench_empty_program"], {}),
        "halvik-diagnostic -h": ([BUILD / "halvik-diagnostic", "-h"], {}),
        "halvik-diagnostic -s -c, up to its first command": ([BUILD / "bench_diagnostic", "-s", "-c"], {}),
        "halvik-diagnostic -s, up to its first command": ([BUILD / "bench_diagnostic", "-s"], {}),
    }
    for title, display in (("without a display", {}), ("with a display named", {"DISPLAY": ":0"})):
        results = compare(times, {name: (command, display) for name, (command, _) in ways.items()})
        goals = ("", "1.2", "2", "2")
        table(f"Start, {title}", ("what", "milliseconds", "ratio to the empty one", "goal: at most"),
              [(name, f"{runs.median() * 1e3:.2f} ({runs.least() * 1e3:.2f})",
                f"{runs.median() / results[empty].median():.2f}", goal)
               for (name, runs), goal in zip(results.items(), goals)])


def nothing(folder, rounds):
    results = compare(rounds * 4, ways_to_run(folder, "nothing", ["/bin/sh -c :"] * COMMANDS))
    table(f"{COMMANDS} commands that end at once", ("what", "seconds", "ours / it (goal: ninja at most 1)"),
          run_rows(results))


def sleep(folder, rounds):
    slowest = 2.0
    naps = [slowest * number / (COMMANDS - 1) for number in range(COMMANDS)]
    alone = "the slowest command alone"
    # Before the last of them, any program has to start all the others.
    for order, ordered, base in (("the slowest first", naps[::-1], alone), ("the slowest last", naps, MINIMUM)):
        ways = ways_to_run(folder, "sleep", [f"sleep {nap:.3f}" for nap in ordered])
        ways[alone] = (["/bin/sh", "-c", f"sleep {slowest}"], {})
        results = compare(rounds, ways)
        base_median = results[base].median()
        table(f"{COMMANDS} commands that sleep for up to {slowest} s, {order}",
              ("what", "seconds", f"ratio to {base} (goal: ours at most 1.01)"),
              [(name, runs.cell(), f"{runs.median() / base_median:.3f}") for name, runs in results.items()])


def logs(folder, rounds):
    medians = {}
    for count in (2000, 5000):
        logs_folder = folder / f"logs{count}"
        logs_folder.mkdir()
        content = b"A line of a log as the agent on a machine might write it.\n" * 72
        paths = [logs_folder / f"log{number}" for number in range(count)]
        for path in paths:
            path.write_bytes(content[:4096])
        lines = [f'cat "{path}"' for path in paths]
        results = compare(rounds, ways_to_run(folder, f"logs{count}", lines, {"BENCH_LOGS": f"{logs_folder}/"}))
        medians[count] = results[OURS].median()
        table(f"{count:,} logs of 4 KB", ("what", "seconds", "ours / it (goal: ninja at most 1)"), run_rows(results))
        # The others start helpers, whose time counts as their children's.
        own = results[OURS].median("own")
        table(f"{count:,} logs of 4 KB: processor time of the program itself",
              ("what", "seconds", "ours / it (goal: ninja at most 1)"),
              [(name, results[name].cell("own"), f"{own / results[name].median('own'):.2f}")
               for name in (OURS, "ninja -j0 -k0", "Python asyncio", MINIMUM)])
        share = own / results[MINIMUM].median("children")
        goal = " (goal: at most 5 %)" if count == 2000 else ""
        say(f"\nOwn processor time as a share of what the commands took: {share:.1%}{goal}")
    say(f"\nTime for 5,000 logs / time for 2,000: {medians[5000] / medians[2000]:.2f} (goal: at most 2.6)")


def bytes_captured(folder, rounds):
    size = 1024 * MEBIBYTE
    source = folder / "source"
    line = b"A line of text as a log of a system might hold it, over and over again.\n"
    block = (line * (MEBIBYTE // len(line) + 1))[:MEBIBYTE]
    with source.open("wb") as file:
        for _ in range(size // MEBIBYTE):
            file.write(block)
    kept = pathlib.Path("/dev/shm") / folder.name
    pipe = "a pipe from cat to cat"
    for title, lines in (("one command", [f"cat {source}"]),
                         (f"{COMMANDS} commands together", [f"head -c {size // COMMANDS} {source}"] * COMMANDS)):
        ways = ways_to_run(folder, f"bytes{len(lines)}", lines)
        del ways[MINIMUM]
        ways[pipe] = (["/bin/sh", "-c", f"cat {source} | cat"], {})
        ways["the same pipe, kept in memory"] = (["/bin/sh", "-c", f"cat {source} | cat >{kept}; rm {kept}"], {})
        results = compare(rounds, ways)
        base = results[pipe]
        table(f"1 GiB from {title}",
              ("what", "seconds", "ratio to the pipe (goal: ours at most 1.5)", "of the least ones", "peak memory / bytes"),
              [(name, runs.cell(), f"{runs.median() / base.median():.2f}", f"{runs.least() / base.least():.2f}",
                f"{max(cost.memory for cost in runs.costs) / size:.2f}") for name, runs in results.items()])
        peak = max(cost.memory for cost in results[OURS].costs)
        say(f"\nOur peak memory as a share of 2.1 bytes a byte and 30 MB: {peak / (2.1 * size + 30e6):.2f} (goal: at most 1)")


def functions(folder, rounds):
    output = folder / "functions.json"
    subprocess.run([BUILD / "bench_functions", f"--benchmark_repetitions={max(rounds, 3)}", f"--benchmark_out={output}",
                    "--benchmark_min_time=0.1", "--benchmark_enable_random_interleaving=true"],
                   check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    medians = {}
    for run in json.loads(output.read_text())["benchmarks"]:
        if run.get("aggregate_name") == "median":
            medians[run["run_name"]] = (run["cpu_time"] / 1e6, run["bytes_per_second"])
    copies = {name: speed for name, (_, speed) in medians.items() if name.startswith("copy")}

    def copy_of_same_size(name):
        size = int(name.split("bytes:")[1].split("/")[0]) if "bytes:" in name else 16 * MEBIBYTE
        return copies[f"copy/bytes:{size}"]

    table("Functions, each beside memcpy of as many bytes",
          ("function", "milliseconds", "GB/s", "time / memcpy (goal: at most 2)"),
          [(name, f"{milliseconds:.2f}", f"{speed / 1e9:.1f}", f"{copy_of_same_size(name) / speed:.2f}")
           for name, (milliseconds, speed) in medians.items()])


SUBJECTS = {"start": start, "nothing": nothing, "sleep": sleep, "logs": logs, "bytes": bytes_captured,
            "functions": functions}


def prepare():
    steps = [[ROOT / "scripts/install_packages", "bench"],
             ["cmake", "--preset", "release", "-D", "HALVIK_BENCHMARKS=ON"],
             ["cmake", "--build", "--preset", "release"]]
    for step in steps:
        subprocess.run(step, cwd=ROOT, check=True, stdout=sys.stderr)


def main():
    parser = argparse.ArgumentParser(prog="compare", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("-r", "--rounds", type=int, default=5)
    parser.add_argument("--save", action="store_true")
    parser.add_argument("subjects", nargs="*", metavar="SUBJECT")
    arguments = parser.parse_args()
    subjects = arguments.subjects or list(SUBJECTS)
    if not SUBJECTS.keys() >= set(subjects):
        parser.error(f"the subjects are {', '.join(SUBJECTS)}")
    prepare()
    print(result_pages.machine(PACKAGES))
    with tempfile.TemporaryDirectory() as name:
        for subject in subjects:
            printed.clear()
            SUBJECTS[subject](pathlib.Path(name), arguments.rounds)
            if arguments.save:
                save(subject, arguments.rounds)


if __name__ == "__main__":
    main()
