# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the commands of a run inherit from the program, and what they do not."""

import os
import subprocess
import sys

import isolation
import program_tests
import report_text

DESCRIPTORS = "ls /proc/$$/fd; :"  # the shell's own: the second command keeps it from becoming the first
ALL = report_text.PLAN_LENGTH


def python(code):
    """A prefix that does something to the process that then becomes the program."""
    return [sys.executable, "-I", "-c", f"import os, signal, sys\n{code}\nos.execv(sys.argv[1], sys.argv[1:])"]


class ChildrenTest(program_tests.ProgramTest):
    def outputs(self, lines, **others):
        """What each command prints on standard output, without its last line feed; nothing else may be printed."""
        ended = self.run_test_build(["-s", "-c"], lines, **others)
        self.assertEqual(ended.status, 0)
        self.assertEqual(ended.stderr, b"")
        blocks = report_text.blocks(ended.stdout[:-1])
        self.assertEqual(len(blocks), ALL)
        for _, content in blocks:
            self.assertNotIn(b"stderr:\n", content)
        return [content.removeprefix(b"stdout:\n").decode()[:-2] for _, content in blocks[:len(lines)]]


class InheritanceTest(ChildrenTest):
    def test_standard_input(self):
        text = "line one\nline two\n" * 20000
        read, = self.outputs(["cat"], stdin_bytes=text.encode())
        self.assertEqual(read + "\n", text)

    def test_standard_input_that_is_a_file(self):
        (self.work / "input").write_text("from a file")
        with open(self.work / "input", "rb") as file:
            read, = self.outputs(["cat; echo"], stdin=file)
        self.assertEqual(read, "from a file")

    def test_working_directory(self):
        folder = self.folder / "with blank \u00e4"
        folder.mkdir()
        self.assertEqual(self.outputs(["pwd"], cwd=folder), [str(folder)])

    def test_environment(self):
        env = {"MARK": "one two\n=\u00e4", "EMPTY": "", "HOME": None}
        mark, empty, home, names = self.outputs(
            ['printf "%s\\n" "$MARK"', 'echo "${EMPTY-unset}."', 'echo "${HOME-unset}"', "env -0 | tr '\\n\\0' '?\\n'"],
            env=env)
        self.assertEqual((mark, empty, home), ("one two\n=\u00e4", ".", "unset"))
        expected = {*self.environment(env), "TEST_BUILD_COMMANDS", "TEST_BUILD_SUBMIT_URL", "PWD"}
        self.assertEqual({line.partition("=")[0] for line in names.split("\n")} - {"OLDPWD", "_"}, expected)

    def test_user_mask_and_limits(self):
        prefix = ["sh", "-c", 'umask 027; ulimit -t 1234; exec "$@"', "sh"]
        self.assertEqual(self.outputs(["umask", "ulimit -t"], prefix=prefix), ["0027", "1234"])


class DescriptorTest(ChildrenTest):
    def test_each_command_has_three(self):
        self.assertEqual(self.outputs([DESCRIPTORS] * ALL), ["0\n1\n2"] * ALL)

    def test_also_when_the_program_was_given_more(self):
        reader, writer = os.pipe()
        extra = [reader, writer] + [os.dup2(reader, number) for number in (50, 100, 333)]
        try:
            printed = self.outputs([DESCRIPTORS] * ALL, pass_fds=extra)
        finally:
            for descriptor in extra:
                os.close(descriptor)
        self.assertEqual(printed, ["0\n1\n2"] * ALL)

    def test_output_streams_are_pipes_of_their_own(self):
        targets = "\n".join(self.outputs(["readlink /proc/$$/fd/1 /proc/$$/fd/2"] * ALL)).split("\n")
        self.assertEqual(len(set(targets)), 2 * ALL)
        for target in targets:
            self.assertRegex(target, r"^pipe:\[\d+\]$")

    def test_the_limit_is_the_one_that_the_program_was_started_with(self):
        for soft, hard in ((200, 2000), (256, 256), (1024, 3000)):
            with self.subTest(soft=soft, hard=hard):
                prefix = ["sh", "-c", f'ulimit -Sn {soft}; ulimit -Hn {hard}; exec "$@"', "sh"]
                self.assertEqual(self.outputs(["ulimit -Sn", "ulimit -Hn"], prefix=prefix), [str(soft), str(hard)])

    def test_a_low_soft_limit_does_not_limit_the_run(self):
        prefix = ["sh", "-c", 'ulimit -Sn 20; exec "$@"', "sh"]
        self.assertEqual(self.outputs(["ulimit -Sn"] * ALL, prefix=prefix), ["20"] * ALL)


class SignalTest(ChildrenTest):
    MASKS = "sed -n 's/^Sig\\(Blk\\|Ign\\):\\t//p' /proc/self/status"
    C_LIBRARYS_OWN = 1 << 31 | 1 << 32  # which it ignores in what it spawns; nobody else can use these two signals

    def assert_defaults(self, printed):
        self.assertEqual(len(printed), ALL)
        for blocked, ignored in (masks.split("\n") for masks in printed):
            self.assertEqual(int(blocked, 16), 0)
            self.assertEqual(int(ignored, 16) & ~self.C_LIBRARYS_OWN, 0)

    def test_defaults(self):
        self.assert_defaults(self.outputs([self.MASKS] * ALL))

    def test_defaults_whatever_the_program_was_started_with(self):
        code = """
ignored = [signal.SIGPIPE, signal.SIGCHLD, signal.SIGALRM, signal.SIGTERM, signal.SIGUSR1]
for number in ignored:
    signal.signal(number, signal.SIG_IGN)
signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGCHLD, signal.SIGPIPE, signal.SIGTERM, signal.SIGUSR2, 40, 64])
"""
        self.assert_defaults(self.outputs([self.MASKS] * ALL, prefix=python(code)))

    def test_the_limit_on_descriptors_is_the_one_that_the_program_was_started_with(self):
        code = """
import resource
resource.setrlimit(resource.RLIMIT_NOFILE, (300, 800))
"""
        self.assertEqual(
            self.outputs(["ulimit -Sn; ulimit -Hn"] * ALL, prefix=python(code)), ["300\n800"] * ALL)

    def test_a_writer_without_a_reader_ends(self):
        lines = ["yes | head -1", "yes 2>&1 | head -1; seq 1000000 | head -1"]
        self.assertEqual(self.outputs(lines), ["y", "y\n1"])


class EndTest(ChildrenTest):
    def test_what_a_descendant_writes_after_its_parents_end_counts(self):
        """The descendant itself waits until its parent has ended, whether or not anyone has taken notice of that."""
        alive = "grep -q '^State:.[^Z]' /proc/$$/status 2>/dev/null"
        wait = f"while {alive}; do :; done"
        late = f"({wait}; echo late; seq 5000; echo last) & echo early"
        expected = "\n".join(["early", "late", *map(str, range(1, 5001)), "last"])
        self.assertEqual(self.outputs([late, "echo beside"]), [expected, "beside"])

        ended = self.run_test_build(["-s", "-c"], [f"({wait}; echo late >&2) >/dev/null & echo early >&2"])
        self.assertEqual(report_text.blocks(ended.stdout)[0][1], b"stderr:\nearly\nlate\n\n")

    def test_a_command_that_closes_its_streams_early_is_waited_for(self):
        line = "exec >&- 2>&-; while ! test -e go; do sleep 0.01; done; touch gone"
        release = "while ! test -e closed; do sleep 0.01; done; touch go"
        self.outputs([line, release, "touch closed"])
        self.assertTrue((self.work / "gone").exists())

    def test_all_run_at_once(self):
        """Each command ends only after the last one has started."""
        lines = ["while ! test -e started; do sleep 0.01; done; echo done"] * (ALL - 1) + ["touch started; echo done"]
        self.assertEqual(self.outputs(lines), ["done"] * ALL)

    def test_launch_order_is_kept_whatever_the_order_of_ends(self):
        lines = [f"while ! test -e ended-{i + 1}; do sleep 0.01; done; touch ended-{i}; echo {i}" for i in range(ALL)]
        lines[-1] = f"touch ended-{ALL - 1}; echo {ALL - 1}"
        self.assertEqual(self.outputs(lines), [str(i) for i in range(ALL)])

    def test_no_command_is_left_behind(self):
        ended = self.run_test_build(["-s", "-c"], ["echo $$"] * ALL)
        numbers = [content.split()[1].decode() for _, content in report_text.blocks(ended.stdout)]
        left = subprocess.run(["ps", "-o", "pid=,args=", "-p", ",".join(numbers)], capture_output=True, text=True)
        self.assertNotIn("echo $$", left.stdout)


isolation.run_tests()
