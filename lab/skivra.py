# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the Skivra leaves on a machine: its folder, with logs whose order of creation is not that of their names."""

import os
import shutil

FOLDER = "Library/Application Support/Halvik Skivra"
LOGS = {"ipblock": 40, "probe": 25, "service": 15}


def install(root, originals, with_state=True):
    """Creates the Skivra's folder below a machine's root."""
    folder = root / FOLDER
    shutil.copytree(originals, folder, ignore=None if with_state else shutil.ignore_patterns("skv_state.plist"))
    created = {}  # when the last log of a folder was
    for path, text in logs():
        path = root / path.lstrip("/")
        path.parent.mkdir(parents=True, exist_ok=True)
        created[path.parent] = _create_later(path, created.get(path.parent, 0), text)


def logs():
    """The paths on the machine and the texts of all logs, in the order in which they are created."""
    return [(f"/{FOLDER}/beacon-logs/{name}/{log_name(name, number)}", f"{name} log {number} of {count}\n")
            for name, count in LOGS.items() for number in range(1, count + 1)]


def remove(root):
    shutil.rmtree(root / FOLDER, ignore_errors=True)


def log_name(folder, number):
    """The name of the nth log of a folder. Sorted by these names, the logs would be in another order."""
    return f"{folder} {number * 37 % 101:03}.log"


def _create_later(path, previous, text):
    """Creates a file with a creation time of its own; a file system's clock may tick slowly. Returns the time in ns."""
    while True:
        with open(path, "x", encoding="ascii") as file:
            created = os.stat(file.fileno()).st_ctime_ns
            if created > previous:
                file.write(text)
                return created
        os.unlink(path)
