# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The program as `cmake --install` leaves it below any folder."""

import os
import subprocess

import builds
import isolation
import program_tests
import report_text
import skipping

FILES = """
bin/halvik-diagnostic
libexec/halvik-diagnostic/halvik-diagnostic-window
libexec/halvik-diagnostic/halvik-upload.so
libexec/halvik-diagnostic/open_in_text_editor
libexec/halvik-diagnostic/scutil
libexec/halvik-diagnostic/system_profiler
share/applications/halvik-diagnostic.desktop
share/bash-completion/completions/halvik-diagnostic
share/fish/vendor_completions.d/halvik-diagnostic.fish
share/halvik-diagnostic/ansible/ansible.cfg
share/halvik-diagnostic/ansible/collect.yml
share/halvik-diagnostic/ansible/install.yml
share/halvik-diagnostic/ansible/roles/halvik_diagnostic/defaults/main.yml
share/halvik-diagnostic/ansible/roles/halvik_diagnostic/meta/argument_specs.yml
share/halvik-diagnostic/ansible/roles/halvik_diagnostic/meta/main.yml
share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/collect.yml
share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/install.yml
share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/main.yml
share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/prepare.yml
share/halvik-diagnostic/ansible/roles/halvik_diagnostic/tasks/read.yml
share/icons/hicolor/128x128/apps/halvik-diagnostic.png
share/icons/hicolor/48x48/apps/halvik-diagnostic.png
share/icons/hicolor/64x64/apps/halvik-diagnostic.png
share/icons/hicolor/scalable/apps/halvik-diagnostic.svg
share/man/man1/halvik-diagnostic.1
share/metainfo/example.halvik.Diagnostic.metainfo.xml
share/zsh/site-functions/_halvik-diagnostic
""".split()


class InstallTest(program_tests.ProgramTest):
    def setUp(self):
        super().setUp()
        self.prefix = self.folder / "any place"
        subprocess.run(["cmake", "--install", os.path.dirname(builds.program()), "--prefix", self.prefix], check=True,
                       stdout=subprocess.DEVNULL)

    def test_files(self):
        found = [str(path.relative_to(self.prefix)) for path in self.prefix.rglob("*") if not path.is_dir()]
        self.assertEqual(sorted(found), FILES)

    @isolation.needs_namespaces
    def test_the_program_finds_what_came_with_it(self):
        ended = self.finish(self.start(str(self.prefix / "bin/halvik-diagnostic"), ["-s", "-c"]))
        self.assertEqual((ended.status, ended.messages), (0, []))
        outputs = dict(report_text.blocks(ended.stdout))
        self.assertEqual(len(report_text.blocks(ended.stdout)), report_text.PLAN_LENGTH)
        self.assertIn(b"DNS configuration", outputs[b"/usr/sbin/scutil --dns"])
        self.assertIn(b"System Software Overview:", outputs[b"/usr/sbin/system_profiler SPSoftwareDataType"])


skipping.require_tools("cmake")
isolation.run_tests()
