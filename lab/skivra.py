# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""What the Skivra leaves on a machine: its folder, with logs whose order of creation is not that of their names."""

import os
import shutil

FOLDER = "Library/Application Support/Halvik Skivra"
LOGS = {"ipblock": 40, "probe": 25, "service": 15}


def install(root, originals):
    """Creates the Skivra's folder below a machine's root."""
    folder = root / FOLDER
    shutil.copytree(originals, folder)
    for name, count in LOGS.items():
        (folder / "beacon-logs" / name).mkdir(parents=True)
        previous = 0
        for number in range(1, count + 1):
            previous = _create_later(folder / "beacon-logs" / name / log_name(name, number), previous,
                                     f"{name} log {number} of {count}\n")


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
