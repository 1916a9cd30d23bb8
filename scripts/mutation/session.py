# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""One run of scripts/mutate, from the build to the table."""

import collections
import fcntl
import queue
import random
import subprocess
import sys
import threading
import time

from mutation import isolation, known, modules, places, suites, table, tree, trial

NOT_TRIED = 2


def say(text):
    print(f"mutate: {text}", file=sys.stderr, flush=True)


class Session:
    def __init__(self, root, options):
        self.options = options
        self.tree = tree.Tree(root)
        self.commands = isolation.Commands()
        self.suites = suites.Suites(self.tree, self.commands)
        self.unseen = known.Unseen()
        self.sources = {}
        self.outcomes = []
        self.failure = None

    def files(self):
        """The files that were asked for."""
        patterns = self.options.files or modules.FILES
        files = sorted(str(path.relative_to(self.tree.root))
                       for pattern in patterns for path in self.tree.root.glob(pattern))
        if not files:
            raise ValueError("there are no such files")
        return files

    def find(self, files):
        """The changes of these files."""
        mutants = []
        for file in files:
            path = self.tree.root / file
            self.sources[file] = path.read_bytes()
            finder = places.Finder(file, self.sources[file])
            mutants += finder.find(path, self.tree.parse_arguments(file))
        return mutants

    def choose(self, mutants):
        """Those to try, in an order that makes the first of them a fair sample of all."""
        count = len(mutants) if self.options.sample is None else min(self.options.sample, len(mutants))
        return random.Random(self.options.seed).sample(mutants, count)

    def attempt_all(self, mutants):
        """Tries the changes side by side. Throws what a worker threw."""
        waiting = queue.SimpleQueue()
        for mutant in mutants:
            waiting.put(mutant)
        code = trial.KnownCode()
        threads = [threading.Thread(target=self.work, args=(number, waiting, code))
                   for number in range(self.options.jobs)]
        try:
            for thread in threads:
                thread.start()
            while any(thread.is_alive() for thread in threads):
                time.sleep(0.2)  # a signal is handled between two of these
        finally:
            self.commands.stop()
            for thread in threads:
                if thread.is_alive():  # a signal may come before all have been started
                    thread.join()
        if self.failure is not None:
            raise self.failure

    def work(self, number, waiting, code):
        try:
            folder = self.tree.changed / f"worker-{number}"
            worker = trial.Worker(folder, self.tree, self.suites, self.commands, code)
            while self.failure is None:
                mutant = waiting.get_nowait()
                outcome = trial.Outcome(trial.LISTED)
                if mutant not in self.unseen:
                    outcome = worker.attempt(mutant, self.sources[mutant.file])
                self.outcomes.append((mutant, outcome))
                self.report(mutant, outcome)
        except queue.Empty:
            pass
        except InterruptedError:
            pass
        except Exception as error:
            self.failure = error

    def report(self, mutant, outcome):
        with open(self.tree.changed / "outcomes", "a") as log:
            print(outcome.verdict, outcome.by, *mutant.name, sep=" | ", file=log)
        if outcome.verdict == trial.SURVIVED:
            print(table.describe(mutant), flush=True)
        if len(self.outcomes) % 50 == 0:
            say(f"{len(self.outcomes)} changes tried")


def run(root, options):
    began = time.monotonic()
    session = Session(root, options)
    session.tree.changed.mkdir(parents=True, exist_ok=True)
    with open(session.tree.changed / "lock", "w") as lock:
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
            return run_alone(session, began)
        except BlockingIOError:
            say("another one is at work here")
        except (isolation.NotPermitted, suites.Broken, ValueError, RuntimeError) as error:
            say(error)
        except subprocess.CalledProcessError as error:
            say(f"the program cannot be built without a change: {error}")
    return NOT_TRIED


def run_alone(session, began):
    isolation.require(session.commands, session.tree.folder)
    say("building the program without a change")
    files = session.files()
    session.tree.build(modules.targets(files), sys.stderr)
    found = session.find(files)
    mutants = session.choose(found)
    if session.options.list:
        print("\n".join(table.describe(mutant) for mutant in mutants))
        return 0
    say("running the tests without a change")
    session.suites.measure(files)
    say(f"trying {len(mutants)} of {len(found)} changes")
    try:
        session.attempt_all(mutants)
    except SystemExit:
        print(table.totals(session.outcomes, time.monotonic() - began))
        raise
    for name in session.unseen.without_place(found):
        say("listed as unseen, but no longer there: " + " | ".join(name))
    print(table.totals(session.outcomes, time.monotonic() - began))
    verdicts = collections.Counter(outcome.verdict for _, outcome in session.outcomes)
    return int(verdicts[trial.SURVIVED] > session.options.survivors)
