# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
"""Runs the whole program again and again, each time with one of its system calls failing, and judges the result.

usage: scripts/inject_failures [options]

  --preset NAME      the build to take (default release)
  --scenario NAME    print, file, upload, fallback or window; may be repeated (default: all)
  --call NAME        only calls of this name; may be repeated
  --sample N         no more than N runs of each scenario, chosen at random
  --seed S           the seed of that choice (default 1)
  --thorough         each call by each of its errors, however often the program makes it
  --jobs N           so many runs side by side (default: one for each processor)
  --show VERDICT     print each run that ends so: bad (default), reported, saved or delivered; may be repeated
  --save             also write the shorter table into docs/results/failing_calls.md

Prints two tables, the second one shorter, and ends with status 1 if a run was bad. Needs what
`scripts/install_packages test` installs, and a machine that permits namespaces; no packet leaves it.
docs/testing.md says how a run is judged.
"""

import argparse
import json
import os
import subprocess
import sys
import threading

from project import ROOT


def parse():
    parser = argparse.ArgumentParser(usage=argparse.SUPPRESS, add_help=False)
    parser.add_argument("--preset", default="release")
    parser.add_argument("--scenario", action="append")
    parser.add_argument("--call", action="append")
    parser.add_argument("--sample", type=int)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--thorough", action="store_true")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--show", action="append")
    parser.add_argument("--save", action="store_true")
    parser.add_argument("--worker", help=argparse.SUPPRESS)
    if {"-h", "--help"} & set(sys.argv[1:]):
        sys.exit(__doc__)
    return parser.parse_args()


OPTIONS = parse()
BUILD = ROOT / "build" / OPTIONS.preset
os.environ["HALVIK_TEST_BUILD"] = str(BUILD / "diagnostic_test_build")
os.environ["HALVIK_PLATFORM"] = "posix" if OPTIONS.preset == "posix" else "linux"
os.environ["HALVIK_DIAGNOSTIC"] = str(BUILD / "halvik-diagnostic")

import isolation
import result_pages
from failing_calls import runs, scenarios, stages, sweep
from failing_calls.tally import Tally


def work(name):
    """Answers a line for each line: the plan when asked for it, else the result of a failure."""
    with stages.scenario(name) as scenario:
        for line in sys.stdin:
            request = json.loads(line)
            if request == "plan":
                calls = sweep.count(scenario)
                answer = [(*failure, phase) for failure, phase
                          in sweep.failures(scenario, calls, OPTIONS.thorough)]
            else:
                result = sweep.attempt(scenario, sweep.Failure(*request))
                answer = (result.verdict, result.reached, result.detail)
            print(json.dumps(answer), flush=True)


class Worker:
    """A process that runs one scenario in namespaces of its own."""

    def __init__(self, scenario, prefix):
        words = [*prefix, sys.executable, __file__, "--preset", OPTIONS.preset, "--worker", scenario]
        words += ["--thorough"] * OPTIONS.thorough
        self.process = subprocess.Popen(words, stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def ask(self, request):
        self.process.stdin.write(json.dumps(request) + "\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline()
        if not answer:
            print("inject_failures: a worker has ended", file=sys.stderr)
            os._exit(2)
        return json.loads(answer)

    def close(self):
        self.process.stdin.close()
        self.process.wait()


def try_all(scenario, prefix, tally):
    workers = [Worker(scenario, prefix) for _ in range(OPTIONS.jobs)]
    plan = [(sweep.Failure(*words), phase) for *words, phase in workers[0].ask("plan")]
    plan = [(failure, phase) for failure, phase in plan if not OPTIONS.call or failure.name in OPTIONS.call]
    remaining = iter(sweep.sample(plan, OPTIONS.sample, OPTIONS.seed))
    lock = threading.Lock()

    def serve(worker):
        while True:
            with lock:
                failure, phase = next(remaining, (None, None))
            if failure is None:
                return
            result = sweep.Result(failure, *worker.ask(failure))
            with lock:
                tally.add(result, phase)
                if result.verdict in (OPTIONS.show or [runs.BAD]):
                    print(sweep.describe(result, phase), flush=True)

    threads = [threading.Thread(target=serve, args=(worker,)) for worker in workers]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    for worker in workers:
        worker.close()


def main():
    if OPTIONS.worker:
        isolation.raise_loopback()
        work(OPTIONS.worker)
        return 0
    prefix = isolation.namespace_prefix("--net")
    if prefix is None:
        sys.exit("inject_failures: this machine permits no network and mount namespaces")
    tally = Tally()
    for scenario in OPTIONS.scenario or scenarios.SCENARIOS:
        try_all(scenario, prefix, tally)
    summary = f"{tally.summary()}\n\n{tally.not_reached} runs did not come to the call in question"
    print(f"\n{tally.table()}\n\n{summary}")
    if OPTIONS.save:
        command = " ".join(["scripts/inject_failures", *sys.argv[1:]])
        result_pages.save("failing_calls", "Failing system calls", command, summary)
    return 1 if tally.bad else 0


if __name__ == "__main__":
    sys.exit(main())
