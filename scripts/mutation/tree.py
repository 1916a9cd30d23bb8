# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0

"""The build tree of the unchanged program, and what it takes to compile and link one changed file of it."""

import json
import pathlib
import shlex
import subprocess

# Optimized, so that changes that make no difference make the same code; without the folder's name in it.
FLAGS = ["-O1", "-g0", "-w", "-Wno-error", "-Werror=return-type"]


class Tree:
    def __init__(self, root):
        self.root = root
        self.folder = root / "build/release"  # which scripts/test has built already
        self.changed = root / "build/mutate"
        self.commands = {}
        self.links = {}

    def build(self, targets, output):
        """Builds the unchanged program and its tests. Throws CalledProcessError."""
        configure = ["cmake", "-S", self.root, "-B", self.folder, "-G", "Ninja", "-D", "CMAKE_BUILD_TYPE=Release",
                     "-D", "BUILD_TESTING=ON", "-D", "CMAKE_EXPORT_COMPILE_COMMANDS=ON"]
        subprocess.run(configure, check=True, stdout=output, stderr=output)
        words = ["ninja", "-C", self.folder, *targets]
        with subprocess.Popen(words, stdout=output, stderr=output) as process:
            try:
                status = process.wait()
            except BaseException:
                process.terminate()  # ninja then ends its compilers, which are in process groups of their own
                raise
        if status != 0:
            raise subprocess.CalledProcessError(status, words)
        for entry in json.loads((self.folder / "compile_commands.json").read_text()):
            path = pathlib.Path(entry["file"])
            if path.is_relative_to(self.root):
                self.commands[str(path.relative_to(self.root))] = shlex.split(entry["command"])
        for target in targets:
            self.links[target] = self.link_words(target)

    def link_words(self, target):
        listing = subprocess.run(["ninja", "-C", self.folder, "-t", "commands", target], check=True,
                                 capture_output=True, text=True).stdout
        words = shlex.split(listing.splitlines()[-1])
        return [word for word in words if word not in ("&&", ":")]

    def parse_arguments(self, file):
        """What the compiler's tree depends on."""
        words = self.commands[file]
        return [word for word in words if word.startswith(("-I", "-D", "-std="))] + with_next(words, "-isystem")

    def compile_command(self, file, source, output, *others):
        """Compiles a copy of a file, in place of the file. A launcher such as ccache would only be filled by it."""
        words = self.commands[file]
        compiler = next(at for at, word in enumerate(words) if pathlib.Path(word).name != "ccache")
        kept = words[compiler:words.index("-o")]
        return [*kept, *FLAGS, *others, "-o", str(output), "-c", str(source)]

    def link_command(self, target, file, changed, output):
        """Links a target with the changed object of a file in place of the original, which is one of the target's own
        objects or stands in a library: there it is not looked for, as the changed one comes first."""
        compiled = self.commands[file]
        original = compiled[compiled.index("-o") + 1]
        words = [word for word in self.links[target] if word != original]
        at = words.index("-o")
        return [*words[:at], "-fuse-ld=gold", str(changed), "-o", str(output), *words[at + 2:]]

    def output_of(self, target):
        """Where a target stands in the tree, relative to its folder."""
        words = self.links[target]
        return words[words.index("-o") + 1]


def with_next(words, flag):
    return [word for at, first in enumerate(words) if first == flag for word in (first, words[at + 1])]
