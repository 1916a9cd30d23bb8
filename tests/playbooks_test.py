# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The Ansible playbooks: their form, and the one that installs. tests/lab/many_machines_test.py runs the other one."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

import builds
import skipping
from project import ROOT

PLAYBOOKS = ROOT / "share/ansible"
BUILD = builds.folder()

# A system of its own over the machine's, for what is installed in it: it goes with the process. apt knows no source
# there.
OVERLAY = """
layers=$1
shift
mount -t tmpfs none "$layers"
for folder in etc usr var; do
  mkdir -p "$layers/$folder/upper" "$layers/$folder/work"
  mount -t overlay -o "lowerdir=/$folder,upperdir=$layers/$folder/upper,workdir=$layers/$folder/work" none "/$folder"
done
rm -rf /etc/apt/sources.list /etc/apt/sources.list.d/*
exec "$@"
"""


def isolated(folder, *command):
    return subprocess.run(["unshare", "--net", "--mount", "sh", "-e", "-c", OVERLAY, "sh", folder, *map(str, command)],
                          cwd=PLAYBOOKS, capture_output=True, text=True, env={**os.environ, "HOME": str(folder)})


class FormTest(unittest.TestCase):
    def test_ansible_lint_finds_nothing(self):
        with tempfile.TemporaryDirectory(prefix="halvik-") as folder:
            ended = subprocess.run(["ansible-lint", "--offline", "-q", "--nocolor", "collect.yml", "install.yml"],
                                   cwd=shutil.copytree(PLAYBOOKS, f"{folder}/ansible"), capture_output=True, text=True,
                                   env={**os.environ, "HOME": folder})
        self.assertEqual((ended.stdout, ended.returncode), ("", 0), ended.stderr)


class InstallTest(unittest.TestCase):
    """All runs of a test in one system: each sees what the ones before have done."""

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="halvik-playbooks-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder)
        cls.folder.chmod(0o755)  # apt reads a repository as a user of its own
        if isolated(cls.folder, "true").returncode != 0:
            raise unittest.SkipTest("this machine permits no overlay of its folders")
        subprocess.run(["cpack", "--config", BUILD / "CPackConfig.cmake", "-B", cls.folder / "made"], check=True,
                       capture_output=True)
        cls.package, = (cls.folder / "made").glob("*.deb")

    def runs(self, *lists_of_words):
        """The counts in the last line of each run, with whether the program was installed afterwards."""
        layers = tempfile.mkdtemp(dir=self.folder)
        script = "".join(
            f"ansible-playbook -i localhost, -c local install.yml {words}; "
            "if dpkg-query -W halvik-diagnostic >/dev/null 2>&1; then echo installed; else echo absent; fi\n"
            for words in lists_of_words)
        ended = isolated(layers, "sh", "-c", script)
        found = re.findall(r"^localhost +: .*changed=(\d+) .*failed=(\d+) .*\n\n(\w+)$", ended.stdout, re.MULTILINE)
        self.assertEqual(len(found), len(lists_of_words), ended.stdout + ended.stderr)
        for _, failed, _ in found:
            self.assertEqual(failed, "0", ended.stdout)
        return [(int(changed) > 0, state) for changed, _, state in found]

    def test_from_a_file(self):
        words = f"-e halvik_diagnostic_package={self.package}"
        self.assertEqual(self.runs(f"--check {words}", words, words, f"--check {words}"),
                         [(True, "absent"), (True, "installed"), (False, "installed"), (False, "installed")])

    def test_from_a_repository(self):
        repository = self.folder / "repository"
        repository.mkdir()
        shutil.copy(self.package, repository)
        index = subprocess.run(["dpkg-scanpackages", "."], cwd=repository, check=True, capture_output=True).stdout
        (repository / "Packages").write_bytes(index)
        (self.folder / "office.asc").write_text("a key\n")
        words = (f"-e halvik_diagnostic_repository_key={self.folder}/office.asc "
                 f"-e 'halvik_diagnostic_repository=\"deb [trusted=yes] file:{repository} ./\"'")
        self.assertEqual(self.runs(f"--check {words}", words, words),
                         [(True, "absent"), (True, "installed"), (False, "installed")])


if __name__ == "__main__":
    skipping.require_tools("ansible-playbook", "ansible-lint", "cpack", "dpkg-scanpackages", "unshare")
    unittest.main()
