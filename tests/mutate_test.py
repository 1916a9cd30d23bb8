# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""scripts/mutate on a program of one small file: what it changes, counts and leaves behind."""

import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

import skipping
from mutate_sample import BUILD, EXPECTED, HEADER, READER, SAMPLE, TEST
from project import ROOT

GUARD_SECONDS = 240  # ends a run that hangs; no test waits for it otherwise

UNSEEN = ["return value - 1;", "return value + 0;", "return value + 2;"]


class MutateTest(unittest.TestCase):
    def setUp(self):
        # Not below /tmp, of which changed programs see another one.
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-", dir="/var/tmp"))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        shutil.copytree(ROOT / "scripts", self.folder / "scripts", ignore=shutil.ignore_patterns("__pycache__"))
        files = {"CMakeLists.txt": BUILD, "main.cpp": "int main() {}\n", "report/sample.h": HEADER,
                 "report/sample.cpp": SAMPLE, "tests/unit/report/sample_test.cpp": TEST}
        self.write(files)
        self.list_as_unseen([])

    def write(self, files):
        for name, text in files.items():
            (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
            (self.folder / name).write_text(text)
        self.before = self.sources()

    def sources(self):
        """All files but what is built, with their contents and the time of their last change."""
        return {path: (path.read_bytes(), path.stat().st_mtime_ns) for path in sorted(self.folder.rglob("*"))
                if path.is_file() and "build" not in path.parts}

    def list_as_unseen(self, lines):
        entries = "".join(f"[[unseen]]\nfile = 'report/sample.cpp'\nfunction = 'untested'\nwhy = 'it has no test'\n"
                          f"changes = ['return value + 1; -> {line}']\n" for line in lines)
        (self.folder / "scripts/mutation/unseen.toml").write_text(entries)
        self.before = self.sources()

    def start(self, *options):
        process = subprocess.Popen([self.folder / "scripts/mutate", *options], cwd=self.folder, text=True,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(process.communicate)
        self.addCleanup(process.kill)
        return process

    def run_mutate(self, *options):
        process = self.start(*options)
        output, messages = process.communicate(timeout=GUARD_SECONDS)
        if "does not permit" in messages:
            self.skipTest("this machine permits no namespaces")
        self.assertIn(process.returncode, (0, 1), messages)
        self.assertEqual(self.sources(), self.before)
        return process.returncode, output, messages

    @staticmethod
    def changes(output):
        found = re.findall(r"^report/sample\.cpp:\d+: (\w+) in (\w+)\n  - .*\n  \+ (.*)$", output, re.MULTILINE)
        return [(kind, function, after) for kind, function, after in found]

    @staticmethod
    def counts(output):
        """The numbers of the last row: all, killed, by time, survived, listed, not built, same code."""
        return [int(word) for word in re.findall(r"^all +([\d ]+)$", output, re.MULTILINE)[-1].split()]

    def test_finds_each_kind_of_change_in_code_alone(self):
        status, output, _ = self.run_mutate("--list")
        self.assertEqual(status, 0)
        self.assertEqual(sorted(self.changes(output)), sorted(EXPECTED))

    def test_counts_what_survives_and_what_does_not(self):
        status, output, _ = self.run_mutate()
        self.assertEqual(status, 1)
        self.assertEqual(sorted(line for _, _, line in self.changes(output)), sorted(UNSEEN))
        everything, killed, by_time, survived, listed, not_built, same = self.counts(output)
        self.assertEqual((everything, survived, listed, by_time), (len(EXPECTED), len(UNSEEN), 0, 0))
        # The constant that nothing uses, and `<=` for `<` where the smaller one is taken.
        self.assertGreaterEqual(same, 3)
        self.assertEqual(killed + survived + same + not_built, everything)
        share = 100 * killed / (killed + survived)
        self.assertIn(f"{killed} of {killed + survived} changes that a test can see were killed: {share:.1f} %", output)

    def test_listed_survivors_are_no_failure_wherever_they_stand(self):
        self.list_as_unseen(UNSEEN)
        moved = self.folder / "report/sample.cpp"
        moved.write_text("\n\n" + SAMPLE)
        self.before = self.sources()
        status, output, _ = self.run_mutate("--sample", "100")
        self.assertEqual(status, 0, output)
        self.assertEqual(self.counts(output)[3:5], [0, len(UNSEEN)])

    def test_a_sample_is_chosen_by_its_seed(self):
        samples = [self.changes(self.run_mutate("--list", "--sample", "5", "--seed", seed)[1]) for seed in "112"]
        self.assertEqual([len(sample) for sample in samples], [5, 5, 5])
        self.assertEqual(samples[0], samples[1])
        self.assertNotEqual(samples[0], samples[2])

    def test_a_few_changes_may_survive(self):
        for allowed, expected in ((len(UNSEEN), 0), (len(UNSEEN) - 1, 1)):
            status, output, _ = self.run_mutate("--survivors", str(allowed))
            self.assertEqual(status, expected, output)

    def test_replaces_an_object_that_is_in_no_archive(self):
        self.write(READER)
        status, output, _ = self.run_mutate("reader/rules/*.cpp")
        self.assertEqual(status, 0, output)
        # `-` for `+`; the two values look alike when they are swapped.
        self.assertEqual(self.counts(output)[:4], [1, 1, 0, 0])

    def test_tells_what_is_listed_but_gone(self):
        self.list_as_unseen(UNSEEN)
        listed = self.folder / "scripts/mutation/unseen.toml"
        listed.write_text(listed.read_text().replace("value - 1", "value - 2"))
        self.before = self.sources()
        status, _, messages = self.run_mutate()
        self.assertEqual(status, 1)
        self.assertIn("no longer there: report/sample.cpp | untested | return value + 1; -> return value - 2;", messages)

    def test_tries_nothing_when_the_tests_fail_without_a_change(self):
        test = self.folder / "tests/unit/report/sample_test.cpp"
        test.write_text(TEST.replace('"name < 1: N"', '"N"'))
        process = self.start()
        output, messages = process.communicate(timeout=GUARD_SECONDS)
        if "does not permit" in messages:
            self.skipTest("this machine permits no namespaces")
        self.assertEqual((process.returncode, output), (2, ""))
        self.assertIn("tests fail without a change", messages)

    def test_leaves_nothing_behind_when_it_is_interrupted(self):
        for ending in (signal.SIGINT, signal.SIGTERM):
            process = self.start()
            for line in process.stderr:
                if "does not permit" in line:
                    self.skipTest("this machine permits no namespaces")
                if "trying" in line:
                    break
            self.wait_for(lambda: self.relatives(process.pid))
            process.send_signal(ending)
            self.assertEqual(process.wait(GUARD_SECONDS), 128 + ending)
            self.wait_for(lambda: not self.relatives(process.pid))
            self.assertEqual(self.sources(), self.before)

    def test_may_be_interrupted_while_it_builds(self):
        process = self.start()
        self.wait_for(lambda: process.poll() is not None or self.compilers(process.pid))
        process.send_signal(signal.SIGTERM)
        status, left = process.wait(GUARD_SECONDS), self.relatives(process.pid)
        if "does not permit" in process.communicate()[1]:
            self.skipTest("this machine permits no namespaces")
        self.assertEqual((status, left), (128 + signal.SIGTERM, []))

    def compilers(self, own):
        return [words for words in self.relatives(own) if b"cc1plus" in words and b"sample_test.cpp" in words]

    def test_may_be_interrupted_while_it_begins(self):
        process = self.start("--jobs", "200")
        for line in process.stderr:
            if "does not permit" in line:
                self.skipTest("this machine permits no namespaces")
            if "trying" in line:
                break
        self.wait_for(lambda: self.relatives(process.pid))
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(GUARD_SECONDS), 128 + signal.SIGINT)
        self.wait_for(lambda: not self.relatives(process.pid))

    def relatives(self, own):
        """The processes, besides the script, that have to do with its folder."""
        found = []
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            try:
                words = (entry / "cmdline").read_bytes()
            except OSError:
                continue  # it has just ended
            if int(entry.name) != own and bytes(self.folder) in words:
                found.append(words)
        return found

    @staticmethod
    def wait_for(condition):
        deadline = time.monotonic() + GUARD_SECONDS
        while not condition():
            if time.monotonic() > deadline:
                raise AssertionError("waited in vain")
            time.sleep(0.01)


if __name__ == "__main__":
    skipping.require_modules("clang.cindex", "tomllib")
    skipping.require_tools("cmake", "ninja", "ld.gold", "unshare", "ip")
    unittest.main()
