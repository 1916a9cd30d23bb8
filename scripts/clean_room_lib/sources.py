# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The steps run, test and check: the scripts of a clean clone, each kind of user in a tree of its own."""

import shutil

from clean_room_lib.summary import Failure
from clean_room_lib.tree import USER


def try_sources(summary, steps, bare, folder):
    """The commands of the README, and scripts/check, in a tree for each kind of user."""
    for user in ("root", USER):
        tree = bare.copy(folder / f"sources-of-{user}")
        if user == USER:
            tree.add_user(f"run-{user}", with_sudo=True)
        clone = tree.clone(user)
        if "run" in steps:
            with summary.step(f"as {user}: scripts/run -h"):
                tree.run([f"{clone}/scripts/run", "-h"], f"run-{user}", user=user)
                if "--noskv, " not in (tree.logs / f"run-{user}.log").read_text():
                    raise Failure("no usage was printed")
            with summary.step(f"as {user}: a run with no way out") as facts:
                tree.run([f"{clone}/build/release/halvik-diagnostic", "-s", "-o=report"], f"run-{user}", user=user,
                         network=False)
                count = tree.run(["grep", "-c", "^-*Results for: ", "report"], f"run-{user}", user=user)
                facts.append(f"{count} commands")
        for name in ("test", "check"):
            if name in steps:
                with summary.step(f"as {user}: scripts/{name}") as facts:
                    facts.append(tree.run([f"{clone}/scripts/{name}"], f"{name}-{user}", user=user))
        shutil.rmtree(tree.path)
