# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""A desktop that notes what it is to open."""

import polling


class Desktop:
    """Programs that only note what they are to open: one in place of xdg-open, and the user's editor for plain text."""

    def __init__(self, folder):
        self.programs = folder / "programs"
        self.programs.mkdir()
        self.notes = folder / "opened"
        for name in ("xdg-open", "editor"):
            opener = self.programs / name
            opener.write_text(f'#!/bin/sh\nprintf "%s\\n" "$#:$*" >>"{self.notes}"\n')
            opener.chmod(0o755)
        self.data = folder / "data"
        applications = self.data / "applications"
        applications.mkdir(parents=True)
        (applications / "editor.desktop").write_text(
            f"[Desktop Entry]\nType=Application\nName=Editor\nExec={self.programs}/editor %f\n")
        (applications / "mimeapps.list").write_text("[Default Applications]\ntext/plain=editor.desktop\n")

    @property
    def opened(self):
        """The arguments of every call so far, each of which must have had exactly one."""
        if not self.notes.exists():
            return []
        calls = [line.partition(":") for line in self.notes.read_text().split("\n")[:-1]]
        if any(count != "1" for count, _, _ in calls):
            raise AssertionError(f"opened with another number of arguments: {calls}")
        return [argument for _, _, argument in calls]

    def wait_for(self, count):
        polling.wait_until(lambda: len(self.opened) >= count, f"the desktop has been asked to open {count}")
        return self.opened
